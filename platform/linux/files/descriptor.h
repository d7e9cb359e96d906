// SPDX-License-Identifier: MIT
#pragma once

#include <cerrno>
#include <string>
#include <utility>

namespace zarn::linux_backend {

/// The one owner of an open file. Any thread, one at a time.
class Descriptor {
public:
    Descriptor() = default;
    /// Never follows a link, and no child process inherits it. Not ok() on failure (errno says
    /// why).
    static Descriptor open(const std::string& path, int flags, unsigned mode = 0);
    /// Opens what the user names for reading, links included.
    static Descriptor openNamed(const std::string& path);
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept
        : m_value(std::exchange(other.m_value, -1))
    {
    }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_value, other.m_value);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool ok() const { return m_value >= 0; }
    int get() const { return m_value; }

private:
    int m_value = -1;
};

/// Repeats a system call that a signal interrupted.
template <typename Call> auto retrying(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

} // namespace zarn::linux_backend
