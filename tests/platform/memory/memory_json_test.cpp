// SPDX-License-Identifier: MIT
#include "platform/memory/memory_json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zarn::memory {
namespace {

class MemoryJsonTest : public testing::Test {
protected:
    Value parsed(const std::string& text) const
    {
        const auto result = json.parse(text);
        EXPECT_TRUE(result.ok()) << text;
        return result ? result.value() : Value("malformed");
    }
    static std::string nested(std::size_t depth, const std::string& open, const std::string& close)
    {
        std::string text;
        for (std::size_t i = 0; i < depth; ++i)
            text += open;
        text += "1";
        for (std::size_t i = 0; i < depth; ++i)
            text += close;
        return text;
    }
    MemoryJson json;
};

TEST_F(MemoryJsonTest, ReadsEveryKindOfValue)
{
    EXPECT_EQ(parsed("null"), Value());
    EXPECT_EQ(parsed(" true\n"), Value(true));
    EXPECT_EQ(parsed("false"), Value(false));
    EXPECT_EQ(parsed("-12"), Value(-12));
    EXPECT_EQ(parsed("1.5e1"), Value(15));
    EXPECT_EQ(parsed("\"a\\n\\u00e9\\ud83d\\ude00\\/\""), Value("a\n\xC3\xA9\xF0\x9F\x98\x80/"));
    EXPECT_EQ(parsed("[]"), Value(Value::Array{}));
    EXPECT_EQ(parsed("[1,\"x\",[null]]"), Value(Value::Array{1, "x", Value::Array{Value()}}));
    EXPECT_EQ(parsed(R"({"b":{"c":[]},"a":1})"),
        Value(Value::Dictionary{{"a", 1}, {"b", Value::Dictionary{{"c", Value::Array{}}}}}));
}

TEST_F(MemoryJsonTest, KeepsTheLastOfEqualKeys)
{
    EXPECT_EQ(parsed(R"({"a":1,"a":2})"), Value(Value::Dictionary{{"a", 2}}));
}

TEST_F(MemoryJsonTest, WholeNumbersThatFitAreIntegersAndOthersDoubles)
{
    EXPECT_EQ(parsed("9223372036854775807"), Value(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(parsed("-9223372036854775808"), Value(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(parsed("9223372036854775808"), Value(9223372036854775808.0));
}

TEST_F(MemoryJsonTest, RefusesWhatIsNotJson)
{
    for (const char* text :
        {"", " ", "nul", "True", "01", "+1", "1.", ".5", "1e", "--1", "0x1", "'a'", "\"", "\"\\x\"",
            "\"\\u12\"", "\"\\ud800\"", "\"\\udc00\"", "\"\\ud800\\u0041\"", "\"\t\"", "\"\xFF\"",
            "[", "[1", "[1,]", "[,1]", "[1 2]", "{", "{\"a\"}", "{\"a\":}", "{\"a\":1,}", "{a:1}",
            "{1:1}", "1 2", "{} {}", "1e400", "NaN", "Infinity", "// x\n1"})
        EXPECT_FALSE(json.parse(text).ok()) << text;
}

TEST_F(MemoryJsonTest, NestsFiveHundredAndTwelveDeepAndNoDeeper)
{
    EXPECT_TRUE(json.parse(nested(512, "[", "]")).ok());
    EXPECT_FALSE(json.parse(nested(513, "[", "]")).ok());
    EXPECT_TRUE(json.parse(nested(512, "{\"a\":", "}")).ok());
    EXPECT_FALSE(json.parse(nested(513, "{\"a\":", "}")).ok());
    EXPECT_FALSE(json.parse(std::string(100000, '[')).ok());
}

TEST_F(MemoryJsonTest, RefusesMoreThanAHundredThousandValues)
{
    const auto list = [](std::size_t count) {
        std::string text = "[1";
        for (std::size_t i = 1; i < count; ++i)
            text += ",1";
        return text + "]";
    };
    EXPECT_TRUE(json.parse(list(99'000)).ok());
    EXPECT_FALSE(json.parse(list(101'000)).ok());
}

TEST_F(MemoryJsonTest, PrintsWhatItReadsAgain)
{
    const Value value
        = Value::Dictionary{{"a", Value::Array{1, -2.5, true, Value(), "q\"\\\n\x01"}},
            {"b", Value::Dictionary{}}, {"\xC3\xA9", Value::Array{}}};
    const auto text = json.prettyPrinted(value);
    ASSERT_TRUE(text.ok());
    EXPECT_EQ(parsed(text.value()), value);
    EXPECT_NE(text.value().find("\n"), std::string::npos);
}

TEST_F(MemoryJsonTest, RefusesToPrintWhatJsonCannotHold)
{
    for (const Value& value : {Value(Date{1}), Value(Data{1}), Value(std::nan("")),
             Value(std::numeric_limits<double>::infinity())}) {
        const auto nestedValue = json.prettyPrinted(Value::Dictionary{{"a", Value::Array{value}}});
        ASSERT_FALSE(nestedValue.ok());
        EXPECT_EQ(nestedValue.error().code, ErrorCode::InvalidArgument);
    }
}

} // namespace
} // namespace zarn::memory
