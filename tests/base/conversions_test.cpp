// SPDX-License-Identifier: MIT
#include "base/conversions.h"

#include <gtest/gtest.h>

#include <limits>
#include <locale>

namespace zarn {
namespace {

TEST(Conversions, IntegerOfEveryType)
{
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    const struct {
        Value value;
        std::int64_t integer;
    } rows[] = {{1, 1}, {-7, -7}, {true, 1}, {false, 0}, {2.9, 2}, {-2.9, -2}, {1e300, most},
        {-1e300, least}, {"1", 1}, {" +12 apples", 12}, {"-3", -3}, {"x1", 0}, {"", 0}, {"--1", 0},
        {"99999999999999999999", most}, {"-99999999999999999999", least},
        {"-9223372036854775808", least}, {Value::Array{1}, 0}, {Value(), 0}};
    for (const auto& row : rows)
        EXPECT_EQ(integerFrom(row.value), row.integer) << describe(row.value);
}

TEST(Conversions, ADoubleOutOfRangeSaturates)
{
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    const struct {
        double value;
        std::int64_t integer;
    } rows[] = {{9223372036854774784.0, 9223372036854774784}, {9223372036854775808.0, most},
        {-9223372036854774784.0, -9223372036854774784}, {-9223372036854775808.0, least},
        {-9223372036854777856.0, least}, {std::numeric_limits<double>::infinity(), most},
        {-std::numeric_limits<double>::infinity(), least},
        {std::numeric_limits<double>::quiet_NaN(), 0}};
    for (const auto& row : rows)
        EXPECT_EQ(integerFrom(row.value), row.integer) << row.value;
}

TEST(Conversions, ATextOutOfRangeSaturates)
{
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    const struct {
        const char* text;
        std::int64_t integer;
    } rows[] = {{"9223372036854775806", most - 1}, {"9223372036854775807", most},
        {"9223372036854775808", most}, {"18446744073709551615", most},
        {"18446744073709551616", most}, {"-9223372036854775807", least + 1},
        {"-9223372036854775809", least}, {"-18446744073709551616", least}};
    for (const auto& row : rows)
        EXPECT_EQ(integerFrom(row.text), row.integer) << row.text;
}

TEST(Conversions, ATextGivesTheIntegerThatItBeginsWith)
{
    const struct {
        const char* text;
        std::int64_t integer;
    } rows[] = {{"0", 0}, {"9", 9}, {"/1", 0}, {":1", 0}, {"10:20", 10}, {"7/8", 7}, {"+", 0},
        {"-", 0}, {"+-1", 0}, {"-+1", 0}, {"++1", 0}, {"+ 1", 0}, {"   ", 0}, {" ", 0}, {" 5", 5},
        {"\t\n\v\f\r 42", 42}, {"\b1", 0}, {"\0161", 0}, {"!1", 0}, {"\0371", 0}, {"007", 7}};
    for (const auto& row : rows)
        EXPECT_EQ(integerFrom(row.text), row.integer) << row.text;
}

TEST(Conversions, ATextIsTrueByItsFirstCharacterAfterBlanksASignAndZeros)
{
    for (const char* text : {"Y", "y", "T", "t", "Yes", "tomato", "1", "2", "8", "9", " 1",
             "\t\n\v\f\r 1", "+1", "-1", "-y", "+T", "0001"})
        EXPECT_TRUE(booleanFrom(text)) << text;
    for (const char* text :
        {"", " ", "   ", "+", "-", "0", "000", "+0", "/", ":", "X", "Z", "S", "U", "x", "z", "s",
            "u", "++1", "--1", "+-1", "-+1", "- 1", "0 1", "0x1", "\b1", "\0161", "!1", "on"})
        EXPECT_FALSE(booleanFrom(text)) << text;
}

TEST(Conversions, BooleanOfEveryType)
{
    const struct {
        Value value;
        bool boolean;
    } rows[] = {{true, true}, {false, false}, {1, true}, {0, false}, {-1, true}, {0.5, true},
        {0.0, false}, {"YES", true}, {"yes", true}, {"true", true}, {"1", true}, {"0", false},
        {" +007", true}, {"no", false}, {"", false}, {Value::Array{true}, false}};
    for (const auto& row : rows)
        EXPECT_EQ(booleanFrom(row.value), row.boolean) << describe(row.value);
}

TEST(Conversions, StringOfEveryType)
{
    const struct {
        Value value;
        std::optional<std::string> string;
    } rows[] = {{"a", "a"}, {"", ""}, {5, "5"}, {-5, "-5"}, {true, "1"}, {false, "0"}, {1.5, "1.5"},
        {0.1, "0.10000000000000001"}, {1e300, "1.0000000000000001e+300"},
        {Value::Array{"a"}, std::nullopt}, {Date{1}, std::nullopt}};
    for (const auto& row : rows)
        EXPECT_EQ(stringFrom(row.value), row.string) << describe(row.value);
}

// A locale that writes decimal commas.
class DecimalCommas final : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

TEST(Conversions, ANumberReadsTheSameInEveryLocale)
{
    const auto before = std::locale::global({std::locale::classic(), new DecimalCommas});
    const auto text = stringFrom(1.5);
    std::locale::global(before);
    EXPECT_EQ(text, "1.5");
}

} // namespace
} // namespace zarn
