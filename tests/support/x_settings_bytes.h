// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace zarn::linux_backend {

/// The bytes of a settings manager of X programs.
class XSettingsBytes {
public:
    explicit XSettingsBytes(bool isBigEndian = false)
        : m_isBigEndian(isBigEndian)
    {
    }
    XSettingsBytes& string(const std::string& name, const std::string& value)
    {
        head(1, name);
        integer(value.size(), 4);
        m_settings += value;
        pad();
        return *this;
    }
    XSettingsBytes& number(const std::string& name, std::uint32_t value)
    {
        head(0, name);
        integer(value, 4);
        return *this;
    }
    XSettingsBytes& color(const std::string& name)
    {
        head(2, name);
        m_settings.append(8, '\x7f');
        return *this;
    }
    std::string bytes()
    {
        auto settings = std::move(m_settings);
        m_settings = std::string(1, m_isBigEndian ? '\1' : '\0') + std::string(3, '\0');
        integer(7, 4);
        integer(m_count, 4);
        return m_settings + settings;
    }

private:
    void head(char type, const std::string& name)
    {
        ++m_count;
        m_settings += type;
        m_settings += '\0';
        integer(name.size(), 2);
        m_settings += name;
        pad();
        integer(3, 4);
    }
    void integer(std::size_t value, unsigned size)
    {
        for (unsigned i = 0; i < size; ++i)
            m_settings += static_cast<char>(value >> 8 * (m_isBigEndian ? size - 1 - i : i));
    }
    void pad() { m_settings.append((4 - m_settings.size() % 4) % 4, '\0'); }

    bool m_isBigEndian;
    std::string m_settings;
    std::size_t m_count = 0;
};

} // namespace zarn::linux_backend
