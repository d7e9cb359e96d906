// SPDX-License-Identifier: MIT
#include "profiles/profile_store.h"

#include "tests/profiles/login_fixture.h"

namespace zarn {

namespace {

class ProfileStoreTest : public LoginTest {
protected:
    ProfileStore store{domains, platform.clock};
};

using ProfileStoreDeathTest = ProfileStoreTest;

TEST_F(ProfileStoreTest, TheSuitesHaveTheirFixedNames)
{
    domains.sharedProfileDefaults().set("a", 1);
    domains.actionsDefaults().set("b", 2);
    domains.standardDefaults().set("c", 3);
    EXPECT_EQ(events(),
        (std::vector<std::string>{"set group.R3V8N1P6WB.zarnie.SharedZPMA a",
            "set group.Q7X2M9K4TA.zarnactions b", "set standard c"}));
}

TEST_F(ProfileStoreDeathTest, ASuiteThatCannotBeOpenedStopsTheProcess)
{
    platform.settings.broken = {"group.R3V8N1P6WB.zarnie.SharedZPMA"};
    EXPECT_DEATH(domains.sharedProfileDefaults(),
        "settings suite group.R3V8N1P6WB.zarnie.SharedZPMA cannot be opened");
    platform.settings.broken = {"group.Q7X2M9K4TA.zarnactions"};
    EXPECT_DEATH(
        domains.actionsDefaults(), "settings suite group.Q7X2M9K4TA.zarnactions cannot be opened");
}

TEST_F(ProfileStoreTest, AnAbsentMapIsReplacedByAnEmptyOne)
{
    EXPECT_TRUE(store.loadProfiles().empty());
    EXPECT_EQ(shared().values.at("serversDict"), Value(Value::Dictionary{}));
    EXPECT_EQ(
        events(), (std::vector<std::string>{"set group.R3V8N1P6WB.zarnie.SharedZPMA serversDict"}));
}

TEST_F(ProfileStoreTest, AValueThatIsNoDictionaryIsReplacedByAnEmptyOne)
{
    for (const auto& wrong : {Value("text"), Value(7), Value(Value::Array{"a"}), Value(true)}) {
        shared().values["serversDict"] = wrong;
        EXPECT_TRUE(store.loadProfiles().empty());
        EXPECT_EQ(shared().values.at("serversDict"), Value(Value::Dictionary{}));
    }
}

TEST_F(ProfileStoreTest, AnEmptyMapIsWrittenAgain)
{
    shared().values["serversDict"] = Value::Dictionary{};
    EXPECT_TRUE(store.loadProfiles().empty());
    EXPECT_EQ(
        events(), (std::vector<std::string>{"set group.R3V8N1P6WB.zarnie.SharedZPMA serversDict"}));
}

TEST_F(ProfileStoreTest, AMapWhoseValuesAreNotAllRecordsReadsAsEmptyAndIsNotWritten)
{
    const Value stored
        = Value::Dictionary{{"a", profileRecord("https://a", 1)}, {"b", "no record"}};
    shared().values["serversDict"] = stored;
    EXPECT_TRUE(store.loadProfiles().empty());
    EXPECT_TRUE(events().empty());
    EXPECT_EQ(shared().values.at("serversDict"), stored);
}

TEST_F(ProfileStoreTest, AProperMapIsReadAndNotWritten)
{
    storeProfile("a", "https://a", 5);
    storeProfile("b", "https://b:8443/", 6);
    EXPECT_EQ(store.loadProfiles(),
        (ProfileMap{
            {"a", profileRecord("https://a", 5)}, {"b", profileRecord("https://b:8443/", 6)}}));
    EXPECT_TRUE(events().empty());
}

TEST_F(ProfileStoreTest, ACurrentServerThatNamesAProfileIsKept)
{
    actions().values["currentServer"] = "a";
    EXPECT_EQ(store.validateCurrentServer({{"a", profileRecord("https://a", 5)}}), "a");
    EXPECT_TRUE(events().empty());
}

TEST_F(ProfileStoreTest, AnAbsentCurrentServerIsTheNamelessProfileWhereThereIsOne)
{
    EXPECT_EQ(store.validateCurrentServer({{"", profileRecord("https://a", 5)}}), "");
    EXPECT_TRUE(events().empty());
}

TEST_F(ProfileStoreTest, ACurrentServerThatNamesNoProfileIsForgotten)
{
    for (const auto& profiles : {ProfileMap{}, ProfileMap{{"A", profileRecord("https://a", 5)}}}) {
        actions().values["currentServer"] = "a"; // Names are case-sensitive.
        EXPECT_EQ(store.validateCurrentServer(profiles), "");
        EXPECT_FALSE(actions().values.contains("currentServer"));
    }
}

TEST_F(ProfileStoreTest, WithoutProfilesThereIsNoNewest)
{
    EXPECT_EQ(store.pickMostRecentProfile({}), "");
}

TEST_F(ProfileStoreTest, TheNewestProfileIsAUrl)
{
    EXPECT_EQ(store.pickMostRecentProfile({{"a", profileRecord("https://a", 5)},
                  {"b", profileRecord("https://b", 7)}, {"c", profileRecord("https://c", 6)}}),
        "https://b");
}

TEST_F(ProfileStoreTest, OfEquallyNewProfilesTheFirstWins)
{
    EXPECT_EQ(store.pickMostRecentProfile({{"a", profileRecord("https://a", 1)},
                  {"b", profileRecord("https://b", 7)}, {"c", profileRecord("https://c", 7)}}),
        "https://b");
}

TEST_F(ProfileStoreTest, AFirstRecordWithoutAUsableDateCountsAsNow)
{
    const auto now = platform.clock.time.secondsSince1970;
    for (const auto& first : {Value::Dictionary{{"server", "https://a"}},
             Value::Dictionary{{"server", "https://a"}, {"date", "yesterday"}}}) {
        EXPECT_EQ(
            store.pickMostRecentProfile({{"a", first}, {"b", profileRecord("https://b", now)}}),
            "https://a");
        EXPECT_EQ(
            store.pickMostRecentProfile({{"a", first}, {"b", profileRecord("https://b", now + 1)}}),
            "https://b");
    }
}

TEST_F(ProfileStoreTest, ANewestProfileWithoutAUrlGivesNone)
{
    EXPECT_EQ(store.pickMostRecentProfile({{"a", Value::Dictionary{{"date", Date{5}}}}}), "");
    EXPECT_EQ(store.pickMostRecentProfile({{"a", profileRecord("https://a", 5)},
                  {"b", Value::Dictionary{{"date", Date{6}}, {"server", 12}}}}),
        "");
}

TEST_F(ProfileStoreDeathTest, ALaterRecordWithoutADateStopsTheProcess)
{
    const ProfileMap undated{
        {"a", profileRecord("https://a", 5)}, {"b", Value::Dictionary{{"server", "https://b"}}}};
    EXPECT_DEATH(store.pickMostRecentProfile(undated), "a profile without a date");
}

TEST_F(ProfileStoreDeathTest, ALaterRecordWhoseDateIsNoneStopsTheProcess)
{
    const ProfileMap misdated{{"a", profileRecord("https://a", 5)},
        {"b", Value::Dictionary{{"server", "https://b"}, {"date", "today"}}}};
    EXPECT_DEATH(store.pickMostRecentProfile(misdated), "a profile whose date is no date");
}

TEST_F(ProfileStoreTest, AnAddedProfileReplacesTheOldOneWholeAndTheMapIsWritten)
{
    ProfileMap profiles{
        {"a", Value::Dictionary{{"server", "https://old"}, {"date", Date{1}}, {"extra", 1}}},
        {"b", profileRecord("https://b", 2)}};
    store.addProfile(profiles, "a", "https://new/");
    const ProfileMap expected{
        {"a", Value::Dictionary{{"server", "https://new/"}, {"date", platform.clock.time}}},
        {"b", profileRecord("https://b", 2)}};
    EXPECT_EQ(profiles, expected);
    EXPECT_EQ(storedProfiles(), expected);
}

TEST_F(ProfileStoreTest, ARecordHoldsNothingButServerAndDate)
{
    EXPECT_EQ(store.newRecord("https://a"),
        (Value::Dictionary{{"server", "https://a"}, {"date", platform.clock.time}}));
}

TEST_F(ProfileStoreTest, TheCurrentProfileIsRememberedByNameWithItsUsername)
{
    store.rememberCurrent("Head office", "admin");
    EXPECT_EQ(actions().values,
        (Value::Dictionary{{"currentServer", "Head office"}, {"username", "admin"}}));
    EXPECT_EQ(events(),
        (std::vector<std::string>{"set group.Q7X2M9K4TA.zarnactions currentServer",
            "set group.Q7X2M9K4TA.zarnactions username"}));
}

TEST_F(ProfileStoreTest, SelectingWritesTheDisplayNameOnly)
{
    store.selectProfile("Head office");
    EXPECT_EQ(actions().values, (Value::Dictionary{{"currentServer", "Head office"}}));
}

} // namespace

} // namespace zarn
