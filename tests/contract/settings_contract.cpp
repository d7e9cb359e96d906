// SPDX-License-Identifier: MIT
#include "tests/contract/settings_contract.h"

namespace zarn {
namespace {

using Dictionary = Value::Dictionary;
using Array = Value::Array;

TEST_F(SettingsContract, NothingIsThereAtFirst)
{
    EXPECT_EQ(suite.object("serversDict"), std::nullopt);
    EXPECT_EQ(suite.integer("useUsername"), 0);
    EXPECT_FALSE(suite.boolean("agreedToTermsOfUse"));
    EXPECT_EQ(suite.string("currentServer"), std::nullopt);
}

TEST_F(SettingsContract, EveryTypeComesBackAsItWent)
{
    const Dictionary values{{"true", true}, {"false", false}, {"integer", -7},
        {"largest", std::int64_t{9223372036854775807}}, {"real", 2.5}, {"text", "größer <&>\" 😀"},
        {"empty", ""}, {"data", Data{0, 1, 255}}, {"noData", Data{}}, {"date", Date{1740824100}},
        {"array", Array{1, "two", Array{}}},
        {"record", Dictionary{{"server", "https://a.example:8443/"}, {"date", Date{-5}}}}};
    for (const auto& [key, value] : values)
        suite.set(key, value);
    for (const auto& [key, value] : values)
        EXPECT_EQ(suite.object(key), value) << key;
}

TEST_F(SettingsContract, AKeyMayBeAnyText)
{
    for (const char* key : {"", " ", "a.b/c", "größer", "<key>&amp;", "line\nbreak"}) {
        suite.set(key, key);
        EXPECT_EQ(suite.object(key), Value(key));
    }
}

TEST_F(SettingsContract, ANewValueReplacesTheOldOneWhole)
{
    suite.set("serversDict", Dictionary{{"a", Dictionary{}}, {"b", Dictionary{}}});
    suite.set("serversDict", Dictionary{{"c", Dictionary{}}});
    EXPECT_EQ(suite.object("serversDict"), Value(Dictionary{{"c", Dictionary{}}}));
    suite.set("serversDict", "text");
    EXPECT_EQ(suite.object("serversDict"), Value("text"));
}

TEST_F(SettingsContract, RemovingTakesTheOneKeyAway)
{
    suite.set("a", 1);
    suite.set("b", 2);
    suite.remove("a");
    suite.remove("missing");
    EXPECT_EQ(suite.object("a"), std::nullopt);
    EXPECT_EQ(suite.object("b"), Value(2));
}

TEST_F(SettingsContract, DomainsDoNotShareKeys)
{
    standard.set("saveCreds", 0);
    suite.set("saveCreds", 1);
    settings.suite("group.Q7X2M9K4TA.zarnactions")->set("saveCreds", 2);
    EXPECT_EQ(standard.integer("saveCreds"), 0);
    EXPECT_EQ(suite.integer("saveCreds"), 1);
    EXPECT_EQ(settings.suite("group.Q7X2M9K4TA.zarnactions")->integer("saveCreds"), 2);
}

TEST_F(SettingsContract, ASuiteIsOneObjectForItsName)
{
    EXPECT_EQ(settings.suite(suiteName), &suite);
    EXPECT_EQ(&settings.standard(), &standard);
}

TEST_F(SettingsContract, ReadsSeeWhatAnotherProcessWrote)
{
    EXPECT_EQ(suite.object("key"), std::nullopt);
    auto& other = *backend().otherProcess().suite(suiteName);
    for (int i = 1; i <= 50; ++i) {
        other.set("key", i);
        EXPECT_EQ(suite.integer("key"), i);
        suite.set("key", -i);
        EXPECT_EQ(other.integer("key"), -i);
    }
    other.remove("key");
    EXPECT_EQ(suite.object("key"), std::nullopt);
}

TEST_F(SettingsContract, AWriteKeepsWhatAnotherProcessWroteToOtherKeys)
{
    suite.set("mine", 1);
    auto& other = *backend().otherProcess().suite(suiteName);
    other.set("theirs", 2);
    suite.set("mine", 3);
    EXPECT_EQ(other.integer("mine"), 3);
    EXPECT_EQ(suite.integer("theirs"), 2);
}

TEST_F(SettingsContract, ALaunchArgumentGoesBeforeTheOwnValue)
{
    standard.set("forceBasicAuth", false);
    backend().setLaunchArgument("forceBasicAuth", "1");
    EXPECT_TRUE(standard.boolean("forceBasicAuth"));
    EXPECT_EQ(standard.integer("forceBasicAuth"), 1);
    EXPECT_EQ(standard.object("forceBasicAuth"), Value("1"));
}

TEST_F(SettingsContract, WritingUnderALaunchArgumentStoresTheOwnValue)
{
    backend().setLaunchArgument("saveCreds", "1");
    standard.set("saveCreds", 0);
    EXPECT_EQ(standard.integer("saveCreds"), 1);
    EXPECT_EQ(backend().otherProcess().standard().object("saveCreds"), Value(0));
}

TEST_F(SettingsContract, AnOwnValueGoesBeforeTheDesktopsValue)
{
    backend().setGlobalValue("AppleInterfaceStyle", "Dark");
    EXPECT_EQ(standard.string("AppleInterfaceStyle"), "Dark");
    standard.set("AppleInterfaceStyle", "Light");
    EXPECT_EQ(standard.string("AppleInterfaceStyle"), "Light");
    standard.remove("AppleInterfaceStyle");
    EXPECT_EQ(standard.string("AppleInterfaceStyle"), "Dark");
}

TEST_F(SettingsContract, SuitesSeeNeitherLaunchArgumentsNorTheDesktopsValues)
{
    backend().setLaunchArgument("saveCreds", "1");
    backend().setGlobalValue("AppleInterfaceStyle", "Dark");
    EXPECT_EQ(suite.object("saveCreds"), std::nullopt);
    EXPECT_EQ(suite.object("AppleInterfaceStyle"), std::nullopt);
}

TEST_F(SettingsContract, AWriteThatFailsIsReportedInOneLineAndChangesNothing)
{
    std::vector<std::string> reasons;
    settings.setFailureObserver([&](const std::string& reason) { reasons.push_back(reason); });
    suite.set("kept", "old");
    EXPECT_TRUE(reasons.empty());
    backend().refuseWrites();
    suite.set("kept", "n3w");
    suite.remove("kept");
    ASSERT_EQ(reasons.size(), 2U);
    for (const auto& reason : reasons) {
        EXPECT_NE(reason, "");
        EXPECT_EQ(reason.find('\n'), std::string::npos) << reason;
        EXPECT_EQ(reason.find("n3w"), std::string::npos) << reason;
    }
    EXPECT_EQ(suite.string("kept"), "old");
    standard.set("another domain", 1);
    settings.setFailureObserver({});
    suite.set("kept", "n3w");
    EXPECT_EQ(reasons.size(), 2U);
}

TEST_F(SettingsContract, ValuesConvertWhenTheyAreRead)
{
    suite.set("text", "42 apples");
    suite.set("yes", "YES");
    suite.set("number", 7);
    suite.set("list", Array{});
    EXPECT_EQ(suite.integer("text"), 42);
    EXPECT_TRUE(suite.boolean("yes"));
    EXPECT_EQ(suite.string("number"), "7");
    EXPECT_EQ(suite.integer("list"), 0);
    EXPECT_EQ(suite.string("list"), std::nullopt);
}

} // namespace
} // namespace zarn
