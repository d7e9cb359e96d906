// SPDX-License-Identifier: MIT
#include "terminal/profile_report.h"

#include "base/json.h"
#include "profiles/stored_login.h"

#include <gtest/gtest.h>

namespace zarn {
namespace {

constexpr const char* odd = "q\" b\\ l\n t\t \x01 \xc3\xbc \xf0\x9f\x98\x80";

TEST(ProfileReport, DatesAreInUtcWithWholeSeconds)
{
    EXPECT_EQ(dateText({0}), "1970-01-01T00:00:00Z");
    EXPECT_EQ(dateText({951782399.9}), "2000-02-28T23:59:59Z");
    EXPECT_EQ(dateText({951782400}), "2000-02-29T00:00:00Z");
    EXPECT_EQ(dateText({4102444799}), "2099-12-31T23:59:59Z");
}

TEST(ProfileReport, EveryCharacterSurvivesJson)
{
    const StoredLogin login{odd, odd, true};
    const auto text = profileJson({odd, odd, std::nullopt, true, {}, {}}, &login);
    const auto parsed = parseJson(text);
    ASSERT_TRUE(parsed) << text;
    EXPECT_EQ(parsed.value(),
        Value(Value::Dictionary{{"name", odd}, {"server", odd}, {"added", Value()},
            {"current", true}, {"username", odd}, {"credentials", "api-client"}, {"secret", odd}}));
    EXPECT_EQ(text.find('\x01'), std::string::npos);
}

TEST(ProfileReport, LinesForPeopleStayLines)
{
    EXPECT_EQ(listText({{"a\nb", "s\te", std::nullopt, false, {}, {}}}), "  a\uFFFDb\ts\uFFFDe\n");
    EXPECT_EQ(checkText({"a\nb", "", 3, "x\ry"}), "a\uFFFDb: x\uFFFDy\n");
}

TEST(ProfileReport, APersonReadsWhichKindOfCredentialsItIs)
{
    const ProfileFacts user{"n", "s", Date{0}, true, "me", false};
    EXPECT_EQ(profileText(user, nullptr),
        "Name:          n\nServer:        s\nAdded:         1970-01-01T00:00:00Z\n"
        "Current:       yes\nUsername:      me\n");
    const StoredLogin login{"you", "s3cret", false};
    EXPECT_EQ(profileText({"n", "s", std::nullopt, false, {}, {}}, &login),
        "Name:          n\nServer:        s\nAdded:         unknown\n"
        "Current:       no\nUsername:      you\nPassword:      s3cret\n");
}

} // namespace
} // namespace zarn
