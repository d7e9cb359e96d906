// SPDX-License-Identifier: MIT
#include "base/json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zarn {
namespace {

using Array = Value::Array;
using Dictionary = Value::Dictionary;
using namespace std::string_literals;

constexpr auto byteOrderMark = "\xEF\xBB\xBF";

/// The value, or nothing when the text is malformed.
std::optional<Value> parsed(std::string_view text)
{
    const auto result = parseJson(text);
    if (result)
        return result.value();
    EXPECT_EQ(result.error().code, ErrorCode::Malformed);
    EXPECT_NE(result.error().message, "");
    return std::nullopt;
}

std::string printed(const Value& value)
{
    const auto result = prettyPrintedJson(value);
    return result ? result.value() : "error: " + result.error().message;
}

std::string repeated(std::size_t count, const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

Value nestedArrays(std::size_t depth)
{
    Value value;
    for (std::size_t i = 0; i < depth; ++i)
        value = Array{value};
    return value;
}

TEST(ParseJson, ReadsEveryKindOfValue)
{
    EXPECT_EQ(parsed(R"( {"a" : [true, false, null, -7, 2.5, "x"], "b":{}, "c":[]} )"),
        Value(Dictionary{{"a", Array{true, false, nullptr, -7, 2.5, "x"}}, {"b", Dictionary{}},
            {"c", Array{}}}));
    EXPECT_EQ(parsed(R"({"b":{"c":[[],{"d":[null]}]},"a":1})"),
        Value(Dictionary{{"a", 1},
            {"b", Dictionary{{"c", Array{Array{}, Dictionary{{"d", Array{nullptr}}}}}}}}));
}

TEST(ParseJson, ReadsAnyValueOnTop)
{
    EXPECT_EQ(parsed("true"), Value(true));
    EXPECT_EQ(parsed(" false"), Value(false));
    EXPECT_EQ(parsed("\t\r null\n"), Value());
    EXPECT_EQ(parsed("\"text\""), Value("text"));
    EXPECT_EQ(parsed("42"), Value(42));
    EXPECT_EQ(parsed("[]"), Value(Array{}));
}

TEST(ParseJson, WholeNumbersThatFitAreIntegers)
{
    EXPECT_EQ(parsed("9223372036854775807"), Value(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(parsed("-9223372036854775808"), Value(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(parsed("-9223372036854775808.0"), Value(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(parsed("9223372036854774784.0"), Value(std::int64_t{9223372036854774784}));
    EXPECT_EQ(parsed("9007199254740993"), Value(std::int64_t{9007199254740993}));
    EXPECT_EQ(parsed("1.0"), Value(1));
    EXPECT_EQ(parsed("1.5e1"), Value(15));
    EXPECT_EQ(parsed("1e3"), Value(1000));
    for (const char* zero : {"0", "-0", "0.0", "-0.0", "0e0", "0e999", "0.00E-400"})
        EXPECT_EQ(parsed(zero), Value(0)) << zero;
}

TEST(ParseJson, AllOtherNumbersAreDoubles)
{
    EXPECT_EQ(parsed("0.1"), Value(0.1));
    EXPECT_EQ(parsed("-2.5e-3"), Value(-0.0025));
    EXPECT_EQ(parsed("9223372036854775808"), Value(9223372036854775808.0));
    EXPECT_EQ(parsed("18446744073709551615"), Value(18446744073709551616.0));
    EXPECT_EQ(parsed("18446744073709551616"), Value(18446744073709551616.0));
    EXPECT_EQ(parsed("-9223372036854777856"), Value(-9223372036854777856.0));
    EXPECT_EQ(parsed("123456789012345678901234567890"), Value(123456789012345678901234567890.0));
    EXPECT_EQ(parsed("1E300"), Value(1e300));
    EXPECT_EQ(parsed("4.9e-324"), Value(std::numeric_limits<double>::denorm_min()));
}

TEST(ParseJson, ANumberThatNoDoubleHoldsIsMalformed)
{
    EXPECT_EQ(parsed("1e400"), std::nullopt);
    EXPECT_EQ(parsed("[-1e999999999]"), std::nullopt);
    EXPECT_EQ(parsed(std::string(400, '9')), std::nullopt);
    EXPECT_EQ(parsed("1e-400"), std::nullopt);
    EXPECT_EQ(parsed("-2E-324"), std::nullopt);
    EXPECT_EQ(parsed("0." + std::string(400, '0') + "1"), std::nullopt);
}

TEST(ParseJson, ReadsEscapes)
{
    EXPECT_EQ(
        parsed(R"("\"\\\/\b\f\n\r\tA\u00e9\u20AC\ud83d\ude00")"), Value("\"\\/\b\f\n\r\tAé€😀"));
    EXPECT_EQ(parsed(R"("\u0000")"), Value(std::string(1, '\0')));
    EXPECT_EQ(parsed("\"\x7f\""), Value("\x7f"));
}

TEST(ParseJson, OfEqualKeysTheLastWins)
{
    EXPECT_EQ(parsed(R"({"a":1,"b":2,"a":[3],"a":4})"), Value(Dictionary{{"a", 4}, {"b", 2}}));
}

TEST(ParseJson, OneByteOrderMarkInFrontIsSkipped)
{
    EXPECT_EQ(parsed(byteOrderMark + R"({"version":"10.40.0"})"s),
        Value(Dictionary{{"version", "10.40.0"}}));
    for (const auto& text :
        {byteOrderMark + ""s, repeated(2, byteOrderMark) + "1", " "s + byteOrderMark + "1",
            "1"s + byteOrderMark, "\xEF\xBB"s, "\xEF\xBB"s + "1", "\xFE\xFF"s + "1"})
        EXPECT_EQ(parsed(text), std::nullopt);
}

TEST(ParseJson, BadSyntaxIsMalformed)
{
    for (const char* text :
        {"", " ", "{", "[", "[1", "\"", "{\"a\"}", "{\"a\":}", "{a:1}", "{'a':1}", "'a'", "[1,]",
            "{\"a\":1,}", "[,1]", "[1 2]", "1 2", "1,2", "],[", "true false", "{} {}", "nul",
            "True", "NaN", "Infinity", "01", "-", "--1", "+1", ".5", "1.", "1e", "1e+", "0x10",
            "-01", "[1]]", "// c\n1", "/**/1", "\"\\x\"", "\"\\u12\"", "\"\\u123g\"", "\"\\ud800\"",
            "\"\\ud800x\"", "\"\\udc00\"", "\"\\ud800\\u0041\"", "\"a\nb\"", "\"a\tb\"",
            "{\"a\":1 \"b\":2}", "[1}", "{\"a\":1]", "\"a\" \"b\"", "{1:2}"})
        EXPECT_EQ(parsed(text), std::nullopt) << text;
}

TEST(ParseJson, AZeroByteEndsNothing)
{
    for (const auto& text : {"1\0"s, "1\0 2"s, "[1]\0"s, "[1,\0"s, "\0"s, "\"a\0b\""s, "[1]\n\0"s})
        EXPECT_EQ(parsed(text), std::nullopt) << testing::PrintToString(text);
}

TEST(ParseJson, InvalidUtf8IsMalformed)
{
    for (const char* text : {"\"\xff\"", "\"\xc0\xaf\"", "\"\xed\xa0\x80\"", "\"\xe2\x82\"",
             "\"\xf4\x90\x80\x80\"", "{\"\x80\":1}", "[1]\xff"})
        EXPECT_EQ(parsed(text), std::nullopt);
}

TEST(ParseJson, NestingUpTo512IsRead)
{
    EXPECT_EQ(parsed(repeated(512, "[") + "null" + repeated(512, "]")), nestedArrays(512));
    EXPECT_TRUE(parsed(repeated(512, "[") + repeated(512, "]")));
    EXPECT_TRUE(parsed(repeated(512, "{\"a\":") + "1" + repeated(512, "}")));
    EXPECT_TRUE(parsed("[" + repeated(600, "[],") + "1]"));
    EXPECT_EQ(parsed(repeated(513, "[") + repeated(513, "]")), std::nullopt);
    EXPECT_EQ(parsed(repeated(513, "{\"a\":") + "1" + repeated(513, "}")), std::nullopt);
    EXPECT_EQ(parsed(repeated(512, "[") + "{}" + repeated(512, "]")), std::nullopt);
    EXPECT_EQ(parsed(repeated(100'000, "[") + repeated(100'000, "]")), std::nullopt);
    EXPECT_EQ(parsed(std::string(1'000'000, '[')), std::nullopt);
    EXPECT_EQ(parsed(repeated(100'000, "{\"a\":")), std::nullopt);
}

TEST(ParseJson, AHundredThousandValuesAreReadAndNoMore)
{
    // The array is a value too.
    const auto list = [](std::size_t count, const std::string& member) {
        return "[" + repeated(count - 2, member + ",") + member + "]";
    };
    for (const char* member : {"1", "\"\"", "null", "{}", "[]", "2.5"}) {
        EXPECT_TRUE(parsed(list(100'000, member))) << member;
        EXPECT_EQ(parsed(list(100'001, member)), std::nullopt) << member;
    }
    EXPECT_TRUE(parsed("{" + repeated(99'998, "\"a\":1,") + "\"b\":2}"));
    EXPECT_EQ(parsed("{" + repeated(99'999, "\"a\":1,") + "\"b\":2}"), std::nullopt);
}

TEST(ParseJson, SeparatorsInTextsCountForNothing)
{
    const auto text = std::string(300'000, ',') + std::string(2000, '[') + std::string(2000, '{');
    EXPECT_EQ(parsed("\"" + text + "\""), Value(text));
}

TEST(PrettyPrintedJson, PutsEachMemberOnALineOfItsOwnInTheOrderOfTheBytesOfTheKeys)
{
    const Value value(Dictionary{{"b", Array{1, 2.5, true, false, nullptr, "x"}},
        {"\xEF\xBF\xBD", Dictionary{{"k", Array{Array{}, Dictionary{}}}}}, {"a", -7}, {"😀", ""},
        {"", 0}});
    EXPECT_EQ(printed(value),
        "{\n"
        "    \"\": 0,\n"
        "    \"a\": -7,\n"
        "    \"b\": [\n"
        "        1,\n"
        "        2.5,\n"
        "        true,\n"
        "        false,\n"
        "        null,\n"
        "        \"x\"\n"
        "    ],\n"
        "    \"\xEF\xBF\xBD\": {\n"
        "        \"k\": [\n"
        "            [\n"
        "            ],\n"
        "            {\n"
        "            }\n"
        "        ]\n"
        "    },\n"
        "    \"😀\": \"\"\n"
        "}\n");
    EXPECT_EQ(parsed(printed(value)), value);
}

TEST(PrettyPrintedJson, PrintsAnyValueOnTop)
{
    EXPECT_EQ(printed(true), "true");
    EXPECT_EQ(printed(Value()), "null");
    EXPECT_EQ(printed("x [ ]"), "\"x [ ]\"");
    EXPECT_EQ(printed(-3), "-3");
    EXPECT_EQ(printed(Array{}), "[\n]\n");
    EXPECT_EQ(printed(Dictionary{}), "{\n}\n");
}

TEST(PrettyPrintedJson, EscapesWhatHasToBe)
{
    EXPECT_EQ(printed("\0\x01\x08\t\n\x0b\x0c\r\x1f \"\\/\x7f é\u2028😀"s),
        R"("\u0000\u0001\b\t\n\u000b\f\r\u001f \"\\/)"
        "\x7f é\u2028😀\"");
    EXPECT_EQ(printed("a\xff"s), "\"a\uFFFD\"");
    EXPECT_EQ(printed(Dictionary{{"\"\n", 1}}), "{\n    \"\\\"\\n\": 1\n}\n");
}

TEST(PrettyPrintedJson, PrintsTheShortestTextThatReadsBackAsTheSameNumber)
{
    const std::pair<Value, const char*> table[] = {
        {std::numeric_limits<std::int64_t>::max(), "9223372036854775807"},
        {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        {0.1, "0.1"},
        {0.1 + 0.2, "0.30000000000000004"},
        {-2.5, "-2.5"},
        {1.0, "1"},
        {-0.0, "0"},
        {1e5, "100000"},
        {1e15, "1000000000000000"},
        {9007199254740991.0, "9007199254740991"},
        {1e16, "1e+16"},
        {123456789012345680.0, "123456789012345680"},
        {-5088143117563430912.0, "-5088143117563431000"},
        {9223372036854775808.0, "9223372036854776000"},
        {1e-4, "1e-04"},
        {0.000123, "0.000123"},
        {1e300, "1e+300"},
        {5e-324, "5e-324"},
        {1.7976931348623157e308, "1.7976931348623157e+308"},
    };
    for (const auto& [value, text] : table)
        EXPECT_EQ(printed(value), text);
}

TEST(PrettyPrintedJson, RefusesWhatJsonCannotHold)
{
    for (const auto& value : {Value(Date{1}), Value(Data{1}), Value(std::nan("")),
             Value(-std::numeric_limits<double>::infinity()), Value(Array{1, Date{1}}),
             Value(Dictionary{{"a", Array{Data{}}}, {"b", 1}})}) {
        const auto text = prettyPrintedJson(value);
        ASSERT_FALSE(text);
        EXPECT_EQ(text.error().code, ErrorCode::InvalidArgument);
        EXPECT_EQ(text.error().message, "The value holds what JSON cannot.");
    }
}

TEST(PrettyPrintedJson, PrintsNestingUpTo512)
{
    EXPECT_EQ(parsed(printed(nestedArrays(512))), nestedArrays(512));
    EXPECT_FALSE(prettyPrintedJson(nestedArrays(513)));
    EXPECT_FALSE(prettyPrintedJson(Dictionary{{"a", nestedArrays(512)}}));
}

} // namespace
} // namespace zarn
