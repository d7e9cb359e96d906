// SPDX-License-Identifier: MIT
#include "base/conversions.h"

#include <gtest/gtest.h>

#include <limits>

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
    } rows[] = {{"a", "a"}, {5, "5"}, {true, "1"}, {1.5, "1.5"}, {Value::Array{"a"}, std::nullopt},
        {Date{1}, std::nullopt}};
    for (const auto& row : rows)
        EXPECT_EQ(stringFrom(row.value), row.string) << describe(row.value);
}

} // namespace
} // namespace zarn
