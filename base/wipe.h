// SPDX-License-Identifier: MIT
#pragma once

#include "base/value.h"

#include <cstddef>
#include <string>

namespace zarn {

/// Overwrites bytes in a way that the compiler may not leave out.
inline void overwrite(void* bytes, std::size_t size)
{
    auto* byte = static_cast<volatile unsigned char*>(bytes);
    for (; size > 0; --size)
        *byte++ = 0;
}

/// Overwrites a secret before its memory is given back.
inline void wipe(Data& secret)
{
    overwrite(secret.data(), secret.size());
    secret.clear();
}

inline void wipe(std::string& secret)
{
    overwrite(secret.data(), secret.size());
    secret.clear();
}

/// A text or byte string that is wiped when it goes out of scope.
template <typename Bytes> class Wiped {
public:
    explicit Wiped(Bytes bytes = {})
        : m_bytes(std::move(bytes))
    {
    }
    ~Wiped() { wipe(m_bytes); }
    Wiped(Wiped&& other) noexcept
        : m_bytes(std::move(other.m_bytes))
    {
    }
    Wiped(const Wiped&) = delete;
    Wiped& operator=(const Wiped&) = delete;
    Wiped& operator=(Wiped&&) = delete;

    Bytes& get() { return m_bytes; }
    const Bytes& get() const { return m_bytes; }

private:
    Bytes m_bytes;
};

} // namespace zarn
