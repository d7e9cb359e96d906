// SPDX-License-Identifier: MIT
#include "fuzz/independent_json.h"

#include "base/utf8.h"

#include <charconv>
#include <cmath>

namespace zarn::fuzz {

namespace {

constexpr int deepest = 512;
constexpr std::size_t mostValues = 100'000;

class Parser {
public:
    explicit Parser(std::string_view text)
        : m_text(text)
    {
    }

    std::optional<Value> document()
    {
        auto value = parseValue(0);
        skipBlanks();
        return m_at == m_text.size() ? value : std::nullopt;
    }

private:
    void skipBlanks() { m_at = std::min(m_text.find_first_not_of(" \t\r\n", m_at), m_text.size()); }

    bool take(std::string_view word)
    {
        if (m_text.substr(m_at, word.size()) != word)
            return false;
        m_at += word.size();
        return true;
    }

    std::optional<Value> parseValue(int depth)
    {
        skipBlanks();
        if (m_at == m_text.size() || ++m_values > mostValues)
            return std::nullopt;
        const bool isContainer = m_text[m_at] == '{' || m_text[m_at] == '[';
        if (isContainer && depth == deepest)
            return std::nullopt;
        switch (m_text[m_at]) {
        case '{':
            return parseObject(depth);
        case '[':
            return parseArray(depth);
        case '"':
            if (auto text = parseString())
                return Value(std::move(*text));
            return std::nullopt;
        default:
            return parseWord();
        }
    }

    std::optional<Value> parseWord()
    {
        if (take("true"))
            return Value(true);
        if (take("false"))
            return Value(false);
        if (take("null"))
            return Value();
        return parseNumber();
    }

    std::size_t digits()
    {
        const auto start = m_at;
        while (m_at < m_text.size() && m_text[m_at] >= '0' && m_text[m_at] <= '9')
            ++m_at;
        return m_at - start;
    }

    std::optional<Value> parseNumber()
    {
        const auto start = m_at;
        take("-");
        const bool zero = m_text.substr(m_at, 1) == "0";
        const auto whole = digits();
        if (whole == 0 || (zero && whole > 1))
            return std::nullopt;
        bool isWhole = true;
        if (take(".")) {
            isWhole = false;
            if (digits() == 0)
                return std::nullopt;
        }
        if (take("e") || take("E")) {
            isWhole = false;
            if (!take("+"))
                take("-");
            if (digits() == 0)
                return std::nullopt;
        }
        return number(m_text.substr(start, m_at - start), isWhole);
    }

    static std::optional<Value> number(std::string_view text, bool isWhole)
    {
        std::int64_t integer = 0;
        const auto* end = text.data() + text.size();
        if (isWhole && std::from_chars(text.data(), end, integer).ec == std::errc())
            return Value(integer);
        double real = 0;
        if (std::from_chars(text.data(), end, real).ec != std::errc() || !std::isfinite(real))
            return std::nullopt;
        // 2^63: every whole double below it fits, and its negative does.
        constexpr double limit = 9223372036854775808.0;
        if (real == std::floor(real) && real >= -limit && real < limit)
            return Value(static_cast<std::int64_t>(real));
        return Value(real);
    }

    std::optional<unsigned> hexFour()
    {
        unsigned unit = 0;
        const auto piece = m_text.substr(m_at, 4);
        if (piece.size() < 4
            || std::from_chars(piece.data(), piece.data() + 4, unit, 16).ptr != piece.data() + 4)
            return std::nullopt;
        m_at += 4;
        return unit;
    }

    static void appendUtf8(std::string& text, unsigned point)
    {
        const auto add = [&](unsigned byte) { text += static_cast<char>(byte); };
        if (point < 0x80) {
            add(point);
        } else if (point < 0x800) {
            add(0xC0 | point >> 6);
            add(0x80 | (point & 0x3F));
        } else if (point < 0x10000) {
            add(0xE0 | point >> 12);
            add(0x80 | (point >> 6 & 0x3F));
            add(0x80 | (point & 0x3F));
        } else {
            add(0xF0 | point >> 18);
            add(0x80 | (point >> 12 & 0x3F));
            add(0x80 | (point >> 6 & 0x3F));
            add(0x80 | (point & 0x3F));
        }
    }

    bool parseEscape(std::string& text)
    {
        static constexpr std::string_view letters = "\"\\/bfnrt";
        static constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        const char letter = m_at < m_text.size() ? m_text[m_at++] : '\0';
        if (const auto i = letters.find(letter); letter != '\0' && i != std::string_view::npos) {
            text += meanings[i];
            return true;
        }
        if (letter != 'u')
            return false;
        auto unit = hexFour();
        if (!unit || (*unit >= 0xDC00 && *unit < 0xE000))
            return false;
        if (*unit >= 0xD800 && *unit < 0xDC00) {
            const auto low = take("\\u") ? hexFour() : std::nullopt;
            if (!low || *low < 0xDC00 || *low > 0xDFFF)
                return false;
            unit = 0x10000 + ((*unit - 0xD800) << 10) + (*low - 0xDC00);
        }
        appendUtf8(text, *unit);
        return true;
    }

    std::optional<std::string> parseString()
    {
        ++m_at;
        std::string text;
        while (m_at < m_text.size()) {
            const char c = m_text[m_at++];
            if (c == '"')
                return text;
            if (static_cast<unsigned char>(c) < 0x20 || (c == '\\' && !parseEscape(text)))
                return std::nullopt;
            if (c != '\\')
                text += c;
        }
        return std::nullopt;
    }

    std::optional<Value> parseArray(int depth)
    {
        ++m_at;
        Value::Array array;
        skipBlanks();
        if (take("]"))
            return Value(std::move(array));
        for (;;) {
            auto member = parseValue(depth + 1);
            if (!member)
                return std::nullopt;
            array.push_back(std::move(*member));
            skipBlanks();
            if (take("]"))
                return Value(std::move(array));
            if (!take(","))
                return std::nullopt;
        }
    }

    std::optional<Value> parseObject(int depth)
    {
        ++m_at;
        Value::Dictionary object;
        skipBlanks();
        if (take("}"))
            return Value(std::move(object));
        for (;;) {
            skipBlanks();
            if (m_text.substr(m_at, 1) != "\"")
                return std::nullopt;
            const auto key = parseString();
            skipBlanks();
            if (!key || !take(":"))
                return std::nullopt;
            auto member = parseValue(depth + 1);
            if (!member)
                return std::nullopt;
            object[*key] = std::move(*member);
            skipBlanks();
            if (take("}"))
                return Value(std::move(object));
            if (!take(","))
                return std::nullopt;
        }
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::size_t m_values = 0;
};

} // namespace

std::optional<Value> independentlyParsedJson(std::string_view utf8)
{
    if (utf8.starts_with("\xEF\xBB\xBF"))
        utf8.remove_prefix(3);
    return isUtf8(utf8) ? Parser(utf8).document() : std::nullopt;
}

} // namespace zarn::fuzz
