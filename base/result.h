// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>
#include <variant>

namespace zarn {

enum class ErrorCode { InvalidArgument, NotFound, Malformed, TooLarge, Io, Unavailable };

/// Why an operation failed. The message is for people and never holds a secret.
struct Error {
    ErrorCode code = ErrorCode::Io;
    std::string message;
};

/// A value or an error.
template <typename T, typename E = Error> class [[nodiscard]] Result {
public:
    Result(T value)
        : m_storage(std::in_place_index<0>, std::move(value))
    {
    }
    Result(E error)
        : m_storage(std::in_place_index<1>, std::move(error))
    {
    }

    bool ok() const { return m_storage.index() == 0; }
    explicit operator bool() const { return ok(); }
    /// Only when ok().
    const T& value() const { return std::get<0>(m_storage); }
    T& value() { return std::get<0>(m_storage); }
    /// Only when not ok().
    const E& error() const { return std::get<1>(m_storage); }

private:
    std::variant<T, E> m_storage;
};

struct Success { };
using Status = Result<Success>;

} // namespace zarn
