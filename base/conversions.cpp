// SPDX-License-Identifier: MIT
#include "base/conversions.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <sstream>

namespace zarn {

namespace {

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Launch arguments arrive as texts: "1", "+1", " 42 apples". Out of range: the nearest integer.
std::int64_t leadingInteger(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '+' || text.front() == '-'))
        text.remove_prefix(1);
    if (text.empty() || text.front() < '0' || text.front() > '9')
        return 0;
    std::uint64_t magnitude = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude);
    constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (error != std::errc() || magnitude > most)
        return negative ? std::numeric_limits<std::int64_t>::min()
                        : std::numeric_limits<std::int64_t>::max();
    return negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
}

std::int64_t truncated(double value)
{
    if (std::isnan(value))
        return 0;
    // 2^63 as a double; every double below it fits.
    constexpr double limit = 9223372036854775808.0;
    if (value >= limit)
        return std::numeric_limits<std::int64_t>::max();
    if (value < -limit)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

bool leadingTruth(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    if (!text.empty() && (text.front() == '+' || text.front() == '-'))
        text.remove_prefix(1);
    while (!text.empty() && text.front() == '0')
        text.remove_prefix(1);
    return !text.empty()
        && (std::string_view("YyTt").find(text.front()) != std::string_view::npos
            || (text.front() >= '1' && text.front() <= '9'));
}

std::string decimalText(double value)
{
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.precision(17);
    stream << value;
    return stream.str();
}

} // namespace

std::int64_t integerFrom(const Value& value)
{
    if (const auto* integer = value.integer())
        return *integer;
    if (const auto* boolean = value.boolean())
        return *boolean ? 1 : 0;
    if (const auto* real = value.real())
        return truncated(*real);
    if (const auto* text = value.string())
        return leadingInteger(*text);
    return 0;
}

bool booleanFrom(const Value& value)
{
    if (const auto* boolean = value.boolean())
        return *boolean;
    if (const auto* integer = value.integer())
        return *integer != 0;
    if (const auto* real = value.real())
        return *real != 0;
    if (const auto* text = value.string())
        return leadingTruth(*text);
    return false;
}

std::optional<std::string> stringFrom(const Value& value)
{
    if (const auto* text = value.string())
        return *text;
    if (const auto* integer = value.integer())
        return std::to_string(*integer);
    if (const auto* boolean = value.boolean())
        return *boolean ? "1" : "0";
    if (const auto* real = value.real())
        return decimalText(*real);
    return std::nullopt;
}

} // namespace zarn
