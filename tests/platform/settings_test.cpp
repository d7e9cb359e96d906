// SPDX-License-Identifier: MIT
#include "platform/settings.h"

#include <gtest/gtest.h>

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

TEST(SettingsDomainReads, AStoredValueIsConverted)
{
    EXPECT_EQ(OneValueDomain("12 apples").integer("k"), 12);
    EXPECT_TRUE(OneValueDomain("YES").boolean("k"));
    EXPECT_EQ(OneValueDomain(5).string("k"), "5");
}

TEST(SettingsDomainReads, AnAbsentValueReadsAsTheDefault)
{
    const OneValueDomain domain(std::nullopt);
    EXPECT_EQ(domain.integer("k"), 0);
    EXPECT_FALSE(domain.boolean("k"));
    EXPECT_EQ(domain.string("k"), std::nullopt);
}

} // namespace
} // namespace zarn
