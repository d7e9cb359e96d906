// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace zarn {

/// An environment variable that has its old value again at the end.
class ScopedVariable {
public:
    ScopedVariable(std::string name, const std::string& value)
        : m_name(std::move(name))
    {
        if (const char* before = std::getenv(m_name.c_str()))
            m_before = before;
        set(value);
    }
    ~ScopedVariable()
    {
        if (m_before)
            set(*m_before);
        else
            ::unsetenv(m_name.c_str());
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

    void set(const std::string& value) { ::setenv(m_name.c_str(), value.c_str(), 1); }

private:
    std::string m_name;
    std::optional<std::string> m_before;
};

} // namespace zarn
