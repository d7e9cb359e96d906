// SPDX-License-Identifier: MIT
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace zarn {

/// A moment, in seconds since 1970-01-01 00:00 UTC. Property lists keep whole seconds.
struct Date {
    double secondsSince1970 = 0;
    auto operator<=>(const Date&) const = default;
};

using Data = std::vector<std::uint8_t>;

/// One value of a JSON text or a property list. Plain data: copyable and comparable.
/// Strings are UTF-8. Dictionaries iterate in ascending byte order of their keys.
class Value {
public:
    using Array = std::vector<Value>;
    using Dictionary = std::map<std::string, Value>;

    Value() = default;
    Value(std::nullptr_t) { }
    Value(bool value)
        : m_storage(value)
    {
    }
    Value(int value)
        : m_storage(std::int64_t{value})
    {
    }
    Value(std::int64_t value)
        : m_storage(value)
    {
    }
    Value(double value)
        : m_storage(value)
    {
    }
    Value(const char* value)
        : m_storage(std::string(value))
    {
    }
    Value(std::string_view value)
        : m_storage(std::string(value))
    {
    }
    Value(std::string value)
        : m_storage(std::move(value))
    {
    }
    Value(Data value)
        : m_storage(std::move(value))
    {
    }
    Value(Date value)
        : m_storage(value)
    {
    }
    Value(Array value)
        : m_storage(std::move(value))
    {
    }
    Value(Dictionary value)
        : m_storage(std::move(value))
    {
    }
    /// Otherwise a pointer would silently become a boolean.
    template <typename T> Value(T*) = delete;

    /// Each returns nullptr when the value is of another type; no conversion takes place.
    const bool* boolean() const { return std::get_if<bool>(&m_storage); }
    const std::int64_t* integer() const { return std::get_if<std::int64_t>(&m_storage); }
    const double* real() const { return std::get_if<double>(&m_storage); }
    const std::string* string() const { return std::get_if<std::string>(&m_storage); }
    const Data* data() const { return std::get_if<Data>(&m_storage); }
    const Date* date() const { return std::get_if<Date>(&m_storage); }
    const Array* array() const { return std::get_if<Array>(&m_storage); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&m_storage); }
    Array* array() { return std::get_if<Array>(&m_storage); }
    Dictionary* dictionary() { return std::get_if<Dictionary>(&m_storage); }
    bool isNull() const { return std::holds_alternative<std::monostate>(m_storage); }

    bool operator==(const Value&) const = default;

private:
    std::variant<std::monostate, bool, std::int64_t, double, std::string, Data, Date, Array,
        Dictionary>
        m_storage;
};

/// The string under `key`, or nothing when the key is absent or holds another type.
std::optional<std::string> stringMember(const Value::Dictionary& dictionary, std::string_view key);

/// A complete rendering on one line, for diagnostics. Never called with secrets.
std::string describe(const Value& value);

} // namespace zarn
