// SPDX-License-Identifier: MIT
#include "tests/contract/json_contract.h"

#include <cmath>
#include <limits>

namespace zarn {
namespace {

using Array = Value::Array;
using Dictionary = Value::Dictionary;
using namespace std::string_literals;

TEST_P(JsonContract, ReadsEveryKindOfValue)
{
    EXPECT_EQ(parsed(R"( {"a" : [true, false, null, -7, 2.5, "x"], "b":{}, "c":[]} )"),
        Value(Dictionary{{"a", Array{true, false, nullptr, -7, 2.5, "x"}}, {"b", Dictionary{}},
            {"c", Array{}}}));
}

TEST_P(JsonContract, ReadsFragments)
{
    EXPECT_EQ(parsed("true"), Value(true));
    EXPECT_EQ(parsed(" null\n"), Value());
    EXPECT_EQ(parsed("\"text\""), Value("text"));
    EXPECT_EQ(parsed("42"), Value(42));
}

TEST_P(JsonContract, WholeNumbersThatFitAreIntegers)
{
    EXPECT_EQ(parsed("9223372036854775807"), Value(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(parsed("-9223372036854775808"), Value(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(parsed("9007199254740993"), Value(std::int64_t{9007199254740993}));
    EXPECT_EQ(parsed("1.0"), Value(1));
    EXPECT_EQ(parsed("1e3"), Value(1000));
    EXPECT_EQ(parsed("0"), Value(0));
}

TEST_P(JsonContract, AllOtherNumbersAreDoubles)
{
    EXPECT_EQ(parsed("0.1"), Value(0.1));
    EXPECT_EQ(parsed("-2.5e-3"), Value(-0.0025));
    EXPECT_EQ(parsed("9223372036854775808"), Value(9223372036854775808.0));
    EXPECT_EQ(parsed("1E300"), Value(1e300));
}

TEST_P(JsonContract, ANumberThatNoDoubleHoldsIsMalformed)
{
    EXPECT_EQ(parsed("1e400"), std::nullopt);
    EXPECT_EQ(parsed("[-1e999999999]"), std::nullopt);
    EXPECT_EQ(parsed(std::string(400, '9')), std::nullopt);
}

TEST_P(JsonContract, ReadsEscapes)
{
    EXPECT_EQ(
        parsed(R"("\"\\\/\b\f\n\r\tA\u00e9\u20AC\ud83d\ude00")"), Value("\"\\/\b\f\n\r\tAé€😀"));
    EXPECT_EQ(parsed(R"("\u0000")"), Value(std::string(1, '\0')));
}

TEST_P(JsonContract, OfEqualKeysTheLastWins)
{
    EXPECT_EQ(parsed(R"({"a":1,"b":2,"a":3,"a":4})"), Value(Dictionary{{"a", 4}, {"b", 2}}));
}

TEST_P(JsonContract, BadSyntaxIsMalformed)
{
    for (const char* text : {"", " ", "{", "[", "\"", "{\"a\"}", "{\"a\":}", "{a:1}", "{'a':1}",
             "[1,]", "{\"a\":1,}", "[,1]", "[1 2]", "1 2", "1,2", "],[", "true false", "nul",
             "True", "NaN", "Infinity", "01", "-", "+1", ".5", "1.", "1e", "1e+", "0x10", "-01",
             "[1]]", "// c\n1", "/**/1", "\"\\x\"", "\"\\u12\"", "\"\\u123g\"", "\"\\ud800\"",
             "\"\\ud800x\"", "\"\\udc00\"", "\"\\ud800\\u0041\"", "\"a\nb\"", "\"a\tb\"",
             "\xEF\xBB\xBF"
             "1",
             "{\"a\":1 \"b\":2}", "[1}", "{\"a\":1]", "\"a\" \"b\"", "{1:2}"})
        EXPECT_EQ(parsed(text), std::nullopt) << text;
    EXPECT_EQ(parsed("1\0"s), std::nullopt);
    EXPECT_EQ(parsed("\"a\0b\""s), std::nullopt);
}

TEST_P(JsonContract, InvalidUtf8IsMalformed)
{
    for (const char* text : {"\"\xff\"", "\"\xc0\xaf\"", "\"\xed\xa0\x80\"", "\"\xe2\x82\"",
             "\"\xf4\x90\x80\x80\"", "{\"\x80\":1}"})
        EXPECT_EQ(parsed(text), std::nullopt);
}

TEST_P(JsonContract, NestingUpTo512IsRead)
{
    const auto nested = [](std::size_t depth, const std::string& inner) {
        return std::string(depth, '[') + inner + std::string(depth, ']');
    };
    EXPECT_TRUE(parsed(nested(512, "")));
    EXPECT_TRUE(parsed(nested(512, "1")));
    EXPECT_FALSE(parsed(nested(513, "")));
    EXPECT_FALSE(parsed(nested(513, "1")));
    EXPECT_FALSE(parsed(nested(100000, "")));
    EXPECT_FALSE(parsed(std::string(1000000, '[')));
    std::string objects;
    for (int i = 0; i < 100000; ++i)
        objects += "{\"a\":";
    EXPECT_FALSE(parsed(objects));
}

TEST_P(JsonContract, AHundredThousandValuesAreReadAndNotManyMore)
{
    const auto list = [](std::size_t count) {
        std::string text = "[1";
        for (std::size_t i = 1; i < count; ++i)
            text += ",1";
        return text + "]";
    };
    EXPECT_TRUE(parsed(list(99'000)));
    EXPECT_FALSE(parsed(list(101'000)));
    EXPECT_TRUE(parsed("\"" + std::string(300'000, ',') + "\""));
}

TEST_P(JsonContract, BracketsInTextsAreNoNesting)
{
    const auto brackets = std::string(2000, '[') + "\\\"" + std::string(2000, '{');
    EXPECT_TRUE(parsed("\"" + brackets + "\""));
}

TEST_P(JsonContract, PrintsWhatItReads)
{
    const Value value(Dictionary{{"b", Array{1, 2.5, true, nullptr, "é\"\\\n"}},
        {"a", Dictionary{{"", Array{}}, {"\x01", Dictionary{}}}},
        {"max", std::numeric_limits<std::int64_t>::max()}});
    const auto text = json->prettyPrinted(value);
    ASSERT_TRUE(text);
    EXPECT_EQ(parsed(text.value()), value);
    EXPECT_NE(text.value().find('\n'), std::string::npos);
}

TEST_P(JsonContract, PrintsFragments)
{
    for (const auto& value : {Value(true), Value(), Value("x [ ]"), Value(-3), Value(Array{}),
             Value(Array{Array{}, 1}), Value(Dictionary{})}) {
        const auto text = json->prettyPrinted(value);
        ASSERT_TRUE(text) << describe(value);
        EXPECT_EQ(parsed(text.value()), value);
    }
}

TEST_P(JsonContract, RefusesToPrintWhatJsonCannotHold)
{
    for (const auto& value : {Value(Date{1}), Value(Data{1}), Value(std::nan("")),
             Value(std::numeric_limits<double>::infinity()), Value(Array{Date{1}}),
             Value(Dictionary{{"a", Array{Data{}}}})}) {
        const auto text = json->prettyPrinted(value);
        ASSERT_FALSE(text);
        EXPECT_EQ(text.error().code, ErrorCode::InvalidArgument);
    }
}

} // namespace
} // namespace zarn
