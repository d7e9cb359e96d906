// SPDX-License-Identifier: MIT
#include "platform/settings.h"

#include <gtest/gtest.h>

#include <limits>

namespace zarn {
namespace {

class OneValueDomain final : public SettingsDomain {
public:
    explicit OneValueDomain(std::optional<Value> value)
        : m_value(std::move(value))
    {
    }
    std::optional<Value> object(std::string_view) const override { return m_value; }
    void set(std::string_view, const Value& value) override { m_value = value; }
    void remove(std::string_view) override { m_value.reset(); }

private:
    std::optional<Value> m_value;
};

TEST(SettingsConversion, IntegerOfEveryType)
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
        EXPECT_EQ(OneValueDomain(row.value).integer("k"), row.integer) << describe(row.value);
}

TEST(SettingsConversion, BooleanOfEveryType)
{
    const struct {
        Value value;
        bool boolean;
    } rows[] = {{true, true}, {false, false}, {1, true}, {0, false}, {-1, true}, {0.5, true},
        {0.0, false}, {"YES", true}, {"yes", true}, {"true", true}, {"1", true}, {"0", false},
        {" +007", true}, {"no", false}, {"", false}, {Value::Array{true}, false}};
    for (const auto& row : rows)
        EXPECT_EQ(OneValueDomain(row.value).boolean("k"), row.boolean) << describe(row.value);
}

TEST(SettingsConversion, StringOfEveryType)
{
    const struct {
        Value value;
        std::optional<std::string> string;
    } rows[] = {{"a", "a"}, {5, "5"}, {true, "1"}, {1.5, "1.5"}, {Value::Array{"a"}, std::nullopt},
        {Date{1}, std::nullopt}};
    for (const auto& row : rows)
        EXPECT_EQ(OneValueDomain(row.value).string("k"), row.string) << describe(row.value);
}

TEST(SettingsConversion, AnAbsentValueReadsAsTheDefault)
{
    const OneValueDomain domain(std::nullopt);
    EXPECT_EQ(domain.integer("k"), 0);
    EXPECT_FALSE(domain.boolean("k"));
    EXPECT_EQ(domain.string("k"), std::nullopt);
}

} // namespace
} // namespace zarn
