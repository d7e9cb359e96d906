// SPDX-License-Identifier: MIT
#include "base/value.h"

#include <gtest/gtest.h>

namespace zarn {
namespace {

TEST(Value, DictionariesIterateInByteOrder)
{
    const Value::Dictionary dictionary{{"b", 1}, {"\xC3\xA4", 2}, {"B", 3}, {"a", 4}, {"", 5}};
    std::string order;
    for (const auto& [key, value] : dictionary)
        order += key + "|";
    EXPECT_EQ(order, "|B|a|b|\xC3\xA4|");
}

TEST(Value, AccessorsDoNotConvert)
{
    EXPECT_EQ(Value(1).boolean(), nullptr);
    EXPECT_EQ(Value(true).integer(), nullptr);
    EXPECT_EQ(Value("1").integer(), nullptr);
    EXPECT_EQ(Value(1.0).integer(), nullptr);
    EXPECT_TRUE(Value().isNull());
}

TEST(Value, StringMemberWantsAString)
{
    const Value::Dictionary dictionary{{"text", "a"}, {"number", 1}};
    EXPECT_EQ(stringMember(dictionary, "text"), "a");
    EXPECT_EQ(stringMember(dictionary, "number"), std::nullopt);
    EXPECT_EQ(stringMember(dictionary, "absent"), std::nullopt);
}

TEST(Value, DescribesNumbersWithAllTheirDigits)
{
    EXPECT_EQ(describe(0.1), "0.10000000000000001");
    EXPECT_EQ(describe(Date{1700000000.25}), "date 1700000000.25");
    EXPECT_EQ(describe(false), "false");
}

TEST(Value, DescribesEveryType)
{
    const Value value(Value::Array{
        Value(), true, 7, 0.5, "t", Data{1, 2}, Date{3}, Value::Dictionary{{"k", "v"}}});
    EXPECT_EQ(describe(value), "(null, true, 7, 0.5, \"t\", <2 bytes>, date 3, {k = \"v\"; })");
}

} // namespace
} // namespace zarn
