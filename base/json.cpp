// SPDX-License-Identifier: MIT
#include "base/json.h"

#include <nlohmann/json.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace zarn {

namespace {

using nlohmann::json;

constexpr std::size_t deepest = 512;
// The main thread parses a server's reply, and the window does not repaint meanwhile: this many
// take about 40 ms.
constexpr std::size_t mostValues = 100'000;

bool isWhole(double real)
{
    return real == std::floor(real);
}

/// Builds a value from the parser's events, without recursion. Returning false stops the parser.
class ValueBuilder final : public nlohmann::json_sax<json> {
public:
    Value& value() { return m_value; }

    bool null() override { return take({}); }
    bool boolean(bool value) override { return take(value); }
    bool number_integer(std::int64_t integer) override { return take(integer); }
    bool number_unsigned(std::uint64_t integer) override
    {
        if (integer <= std::uint64_t{std::numeric_limits<std::int64_t>::max()})
            return take(static_cast<std::int64_t>(integer));
        return take(static_cast<double>(integer));
    }
    // `text` has the decimal separator of the user's locale, so it must not be parsed again.
    bool number_float(double real, const std::string& text) override
    {
        const bool isZero = text.find_first_of("123456789") >= text.find_first_of("eE");
        if (real == 0 && !isZero)
            return false;
        constexpr double limit = 9223372036854775808.0;
        if (isWhole(real) && real >= -limit && real < limit)
            return take(static_cast<std::int64_t>(real));
        return take(real);
    }
    bool string(std::string& text) override { return take(std::move(text)); }
    bool binary(json::binary_t&) override { return false; }

    bool start_object(std::size_t) override { return open(Value::Dictionary{}); }
    bool key(std::string& text) override
    {
        m_open.back().key = std::move(text);
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(Value::Array{}); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t, const std::string&, const json::exception&) override
    {
        return false;
    }

private:
    struct Container {
        Value value;
        /// The key of the next member.
        std::string key;
    };

    bool take(Value value)
    {
        if (++m_count > mostValues)
            return false;
        place(std::move(value));
        return true;
    }

    bool open(Value container)
    {
        if (++m_count > mostValues || m_open.size() == deepest)
            return false;
        m_open.push_back({std::move(container), {}});
        return true;
    }

    bool close()
    {
        auto closed = std::move(m_open.back().value);
        m_open.pop_back();
        place(std::move(closed));
        return true;
    }

    void place(Value value)
    {
        if (m_open.empty())
            m_value = std::move(value);
        else if (auto* array = m_open.back().value.array())
            array->push_back(std::move(value));
        else
            m_open.back().value.dictionary()->insert_or_assign(
                std::move(m_open.back().key), std::move(value));
    }

    Value m_value;
    std::vector<Container> m_open;
    std::size_t m_count = 0;
};

std::string quoted(const std::string& text)
{
    return json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

template <typename... Format> std::string shortest(double real, Format... format)
{
    std::array<char, 32> buffer{};
    return {buffer.data(), std::to_chars(buffer.begin(), buffer.end(), real, format...).ptr};
}

// The shortest digits that read back as the same number, padded with zeros.
std::string textOf(double real)
{
    constexpr double allWholeBelow = 9007199254740992.0;
    if (isWhole(real) && std::abs(real) < allWholeBelow)
        return std::to_string(static_cast<std::int64_t>(real));
    auto text = shortest(real);
    if (text.find_first_of(".e") != std::string::npos)
        return text;
    auto digits = shortest(real, std::chars_format::scientific);
    digits.resize(digits.find('e'));
    std::erase(digits, '.');
    digits.resize(text.size(), '0');
    return digits;
}

class Printer {
public:
    /// False when the value holds what JSON cannot.
    bool print(const Value& value)
    {
        if (const auto* dictionary = value.dictionary())
            return printMembers(*dictionary, "{}", [this](const auto& member) {
                m_text += quoted(member.first) + ": ";
                return print(member.second);
            });
        if (const auto* array = value.array())
            return printMembers(
                *array, "[]", [this](const Value& member) { return print(member); });
        if (value.data() || value.date() || (value.real() && !std::isfinite(*value.real())))
            return false;
        if (value.real())
            m_text += textOf(*value.real());
        else
            m_text += value.string() ? quoted(*value.string()) : describe(value);
        return true;
    }

    std::string& text() { return m_text; }

private:
    template <typename Members, typename PrintMember>
    bool printMembers(const Members& members, const char* brackets, PrintMember printMember)
    {
        if (m_depth == deepest)
            return false;
        ++m_depth;
        m_text += brackets[0];
        const char* separator = "\n";
        for (const auto& member : members) {
            m_text += separator + std::string(4 * m_depth, ' ');
            separator = ",\n";
            if (!printMember(member))
                return false;
        }
        --m_depth;
        m_text += "\n" + std::string(4 * m_depth, ' ') + brackets[1];
        return true;
    }

    std::string m_text;
    std::size_t m_depth = 0;
};

} // namespace

Result<Value> parseJson(std::string_view utf8)
{
    ValueBuilder builder;
    // The library treats a zero byte as the end of the text.
    if (utf8.find('\0') == std::string_view::npos
        && json::sax_parse(utf8.begin(), utf8.end(), &builder))
        return std::move(builder.value());
    return Error{ErrorCode::Malformed, "The text is not JSON, or is too large."};
}

Result<std::string> prettyPrintedJson(const Value& value)
{
    Printer printer;
    if (!printer.print(value))
        return Error{ErrorCode::InvalidArgument, "The value holds what JSON cannot."};
    if (value.dictionary() || value.array())
        printer.text() += "\n";
    return std::move(printer.text());
}

} // namespace zarn
