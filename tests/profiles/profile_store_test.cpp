// SPDX-License-Identifier: MIT
#include "profiles/profile_store.h"

#include "profiles/server_url.h"
#include "tests/profiles/flow_fixture.h"
#include "tests/profiles/login_fixture.h"

#include <chrono>
#include <optional>
#include <random>

namespace zarn {

namespace {

class ProfileStoreTest : public LoginTest {
protected:
    ProfileStore store{domains, platform.clock};
};

using ProfileStoreDeathTest = ProfileStoreTest;

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

TEST_F(ProfileStoreTest, ReadingWhatIsStoredWritesNothing)
{
    EXPECT_TRUE(store.storedProfiles().empty());
    shared().values["serversDict"] = "text";
    EXPECT_TRUE(store.storedProfiles().empty());
    shared().values["serversDict"] = Value::Dictionary{{"a", "no record"}};
    EXPECT_TRUE(store.storedProfiles().empty());
    shared().values.clear();
    storeProfile("a", "https://a", 5);
    EXPECT_EQ(store.storedProfiles(), storedProfiles());
    EXPECT_TRUE(events().empty());
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
    EXPECT_DEATH(store.pickMostRecentProfile(undated), "fatal: a profile without a date\n");
}

TEST_F(ProfileStoreDeathTest, ALaterRecordWhoseDateIsNoneStopsTheProcess)
{
    const ProfileMap misdated{{"a", profileRecord("https://a", 5)},
        {"b", Value::Dictionary{{"server", "https://b"}, {"date", "today"}}}};
    EXPECT_DEATH(store.pickMostRecentProfile(misdated), "fatal: a profile whose date is no date\n");
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

// --- Edge cases

using StoredProfilesEdgeCases = FlowTest;
using StoredProfilesEdgeCasesDeathTest = FlowTest;

TEST_F(StoredProfilesEdgeCases, WithoutStoredProfilesStartUpWritesAnEmptyDictionaryAndShowsAddMode)
{
    load();
    EXPECT_EQ(shared().values, (Value::Dictionary{{"serversDict", Value::Dictionary{}}}));
    expectAddMode();
}

TEST_F(StoredProfilesEdgeCases,
    ACurrentServerThatNamesADeletedProfileIsRemovedAndTheNewestUrlIsLookedFor)
{
    storeProfile("https://newest", "https://newest", 9);
    storeProfile("A", "https://a", 5);
    actions().values["currentServer"] = "deleted";
    load();
    EXPECT_FALSE(actions().values.contains("currentServer"));
    EXPECT_EQ(login->model().lastServer, "https://newest");
    EXPECT_EQ(selectedTitle(), "https://newest");
}

TEST_F(StoredProfilesEdgeCases, OfFortyOneStoredProfilesStartUpTrimsTheTwoOldestInMemory)
{
    storeNumberedProfiles(41);
    load();
    const auto& profiles = login->model().availableServersDict;
    EXPECT_EQ(profiles.size(), 39U);
    EXPECT_FALSE(profiles.contains("server 1000"));
    EXPECT_FALSE(profiles.contains("server 1001"));
    EXPECT_EQ(storedProfiles().size(), 41U);
}

TEST_F(StoredProfilesEdgeCases, ARecordWithoutADateIsAlwaysTrimmedFirst)
{
    storeNumberedProfiles(39);
    // First in the map's order: a later record without a date stops the search for the newest.
    (*shared().values.at("serversDict").dictionary())["a undated"]
        = Value::Dictionary{{"server", "https://undated"}};
    load();
    const auto& profiles = login->model().availableServersDict;
    EXPECT_EQ(profiles.size(), 39U);
    EXPECT_FALSE(profiles.contains("a undated"));
}

TEST_F(StoredProfilesEdgeCases, AddingAFortiethAndAFortyFirstProfileNeverHoldsMoreThanForty)
{
    storeNumberedProfiles(39);
    load();
    addServer("new 1", "https://new1");
    EXPECT_EQ(storedProfiles().size(), 40U);
    EXPECT_TRUE(storedProfiles().contains("server 1000"));
    addServer("new 2", "https://new2");
    EXPECT_EQ(storedProfiles().size(), 40U);
    EXPECT_FALSE(storedProfiles().contains("server 1000"));
    EXPECT_TRUE(storedProfiles().contains("new 1"));
    addServer("new 3", "https://new3");
    EXPECT_EQ(storedProfiles().size(), 40U);
    EXPECT_FALSE(storedProfiles().contains("server 1001"));
}

TEST_F(StoredProfilesEdgeCasesDeathTest, ANameTrimmedAwayDuringAnAddStaysInTheMenuUntilTheNextStart)
{
    storeNumberedProfiles(39);
    load();
    addServer("new 1", "https://new1");
    addServer("new 2", "https://new2");
    EXPECT_TRUE(menuHas("server 1000"));
    EXPECT_DEATH(choose("server 1000"), "fatal: a menu title without a stored profile\n");
    load();
    EXPECT_FALSE(menuHas("server 1000"));
}

TEST_F(StoredProfilesEdgeCases, PressingSetChangesNeitherServerNorDateOfAProfile)
{
    storeProfile("A", "https://a/", 5);
    actions().values = {{"currentServer", "A"}, {"useUsername", 1}};
    load();
    field("zarnProServer_textfield").type("https://elsewhere");
    field("zarnProUsername_textfield").type("admin");
    platform.clock.time.secondsSince1970 += 60;
    events().clear();
    press();
    answerSuccess();
    EXPECT_EQ(storedProfiles(), (ProfileMap{{"A", profileRecord("https://a/", 5)}}));
    EXPECT_EQ(settingsWrites(),
        (std::vector<std::string>{"set group.Q7X2M9K4TA.zarnactions currentServer",
            "set group.Q7X2M9K4TA.zarnactions username"}));
}

TEST_F(StoredProfilesEdgeCases,
    AProfileWithoutANameOrWithASlashForAUrlLeavesMenuAtStartAndStoreAtTheNextWrite)
{
    storeProfile("", "https://nameless");
    storeProfile("Slash", "/path");
    storeProfile("A", "https://a");
    load();
    EXPECT_EQ(
        window.outlets.popUp.shownItems(), (std::vector<std::string>{"A", "-", "Add Server..."}));
    EXPECT_EQ(storedProfiles().size(), 3U);
    addServer("B", "https://b");
    EXPECT_EQ(storedProfiles().size(), 2U);
    EXPECT_TRUE(storedProfiles().contains("A"));
    EXPECT_TRUE(storedProfiles().contains("B"));
}

TEST_F(StoredProfilesEdgeCases, RemovingAProfileKeepsItsKeychainEntriesAndTheUsername)
{
    storeProfile("A", "https://a");
    storeSecret("ZPMA-a", "admin", "secret");
    storeSecret("zortcuts-apiClient-a", "id", "client secret");
    actions().values = {{"currentServer", "A"}, {"username", "admin"}};
    load();
    chooseWithOption("A");
    queue.runAll();
    EXPECT_TRUE(storedProfiles().empty());
    EXPECT_EQ(keychainItems(),
        (std::vector<std::string>{"ZPMA-a/admin=secret", "zortcuts-apiClient-a/id=client secret"}));
    EXPECT_EQ(actions().values, (Value::Dictionary{{"currentServer", "A"}, {"username", "admin"}}));
}

TEST_F(StoredProfilesEdgeCases, DisplayNamesAreListedInTheOrderOfTheLocalizedComparison)
{
    for (const auto* name : {"beta", "Alpha", "alpha"})
        storeProfile(name, "https://x");
    load();
    std::vector<std::string> expected{"beta", "Alpha", "alpha"};
    platform.textServices.sortLocalized(expected);
    ASSERT_NE(expected, (std::vector<std::string>{"Alpha", "alpha", "beta"})); // Byte order.
    EXPECT_EQ(login->model().sortedDisplayNames, expected);
}

TEST_F(StoredProfilesEdgeCases, TheHostOfAServerUrlIsItsAuthorityWithoutThePort)
{
    EXPECT_EQ(hostFromServerURL("https://a.b.c:8443/x"), "a.b.c");
    EXPECT_EQ(hostFromServerURL("a.b.c"), "a.b.c");
}

// --- Trimming

// The rule as it is written down, pass by pass. Slow, and obviously right.
void trimPassByPass(ProfileMap& profiles, Date now)
{
    while (profiles.size() > profileTrimThreshold) {
        auto oldest = now;
        std::optional<std::string> candidate;
        for (const auto& [name, value] : profiles) {
            const auto& record = *value.dictionary();
            if (record.empty() || !record.contains("date")) {
                candidate = name;
                break;
            }
            const auto date = *record.at("date").date();
            if (date < oldest) {
                candidate = name;
                oldest = date;
            }
        }
        if (!candidate)
            return;
        profiles.erase(*candidate);
    }
}

class TrimProfilesTest : public LoginTest {
protected:
    double now() const { return platform.clock.time.secondsSince1970; }
    ProfileMap datedProfiles(int count) const
    {
        ProfileMap profiles;
        for (int i = 0; i < count; ++i)
            profiles[std::to_string(1000 + i)] = profileRecord("https://s", now() - 10'000 + i);
        return profiles;
    }
    ProfileStore store{domains, platform.clock};
};

using TrimProfilesDeathTest = TrimProfilesTest;

TEST_F(TrimProfilesTest, UpToThirtyNineProfilesStay)
{
    for (const int count : {0, 1, 38, 39}) {
        auto profiles = datedProfiles(count);
        store.trimProfiles(profiles);
        EXPECT_EQ(profiles, datedProfiles(count));
    }
}

TEST_F(TrimProfilesTest, TheOldestGoFirst)
{
    auto profiles = datedProfiles(41);
    store.trimProfiles(profiles);
    EXPECT_EQ(profiles.size(), 39U);
    EXPECT_FALSE(profiles.contains("1000"));
    EXPECT_FALSE(profiles.contains("1001"));
    EXPECT_TRUE(profiles.contains("1002"));
}

TEST_F(TrimProfilesTest, AnUndatedOrEmptyRecordGoesBeforeTheOldest)
{
    for (const auto& undated : {Value::Dictionary{}, Value::Dictionary{{"server", "https://u"}}}) {
        auto profiles = datedProfiles(39);
        profiles["zz"] = undated;
        store.trimProfiles(profiles);
        EXPECT_EQ(profiles, datedProfiles(39));
    }
}

TEST_F(TrimProfilesTest, UndatedRecordsGoInTheMapsOrder)
{
    auto profiles = datedProfiles(38);
    profiles["a"] = Value::Dictionary{};
    profiles["b"] = Value::Dictionary{{"server", "https://b"}};
    profiles["c"] = Value::Dictionary{};
    store.trimProfiles(profiles);
    EXPECT_EQ(profiles.size(), 39U);
    EXPECT_TRUE(profiles.contains("c"));
}

TEST_F(TrimProfilesTest, OfEquallyOldRecordsTheFirstGoes)
{
    ProfileMap profiles;
    for (int i = 0; i < 41; ++i)
        profiles[std::to_string(1000 + i)] = profileRecord("https://s", 5);
    store.trimProfiles(profiles);
    EXPECT_EQ(profiles.begin()->first, "1002");
    EXPECT_EQ(profiles.size(), 39U);
}

TEST_F(TrimProfilesTest, DatesFromNowOnAreNeverChosenAndTheTrimStops)
{
    ProfileMap profiles;
    for (int i = 0; i < 60; ++i)
        profiles[std::to_string(1000 + i)] = profileRecord("https://s", now() + i);
    const auto before = profiles;
    store.trimProfiles(profiles);
    EXPECT_EQ(profiles, before);
    profiles["1030"] = profileRecord("https://s", now() - 1);
    store.trimProfiles(profiles);
    EXPECT_EQ(profiles.size(), 59U);
    EXPECT_FALSE(profiles.contains("1030"));
}

TEST_F(TrimProfilesTest, ItWritesNothing)
{
    auto profiles = datedProfiles(60);
    store.trimProfiles(profiles);
    EXPECT_TRUE(events().empty());
}

TEST_F(TrimProfilesDeathTest, ADateThatIsNoneStopsTheProcessWhenAPassReachesIt)
{
    auto profiles = datedProfiles(40);
    profiles["1030"] = Value::Dictionary{{"server", "https://s"}, {"date", "May"}};
    EXPECT_DEATH(store.trimProfiles(profiles), "fatal: a profile whose date is no date\n");
    // Thirty-nine records are never walked, and a pass stops at the first undated record.
    profiles.erase("1000");
    store.trimProfiles(profiles);
    profiles["1"] = Value::Dictionary{};
    store.trimProfiles(profiles);
    EXPECT_EQ(profiles.size(), 39U);
    EXPECT_TRUE(profiles.contains("1030"));
    // Reached before the undated record, or after all undated ones are gone.
    profiles["1031x"] = Value::Dictionary{};
    EXPECT_DEATH(store.trimProfiles(profiles), "fatal: a profile whose date is no date\n");
    profiles.erase("1031x");
    profiles["1"] = Value::Dictionary{};
    profiles["1040"] = profileRecord("https://s", 4);
    EXPECT_DEATH(store.trimProfiles(profiles), "fatal: a profile whose date is no date\n");
}

TEST_F(TrimProfilesTest, OneWalkRemovesWhatPassAfterPassWould)
{
    std::mt19937 random(20240817);
    const auto upTo = [&](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
    for (int round = 0; round < 3000; ++round) {
        ProfileMap profiles;
        const int size = upTo(90);
        const int undatedShare = upTo(3) == 0 ? 40 : 1;
        // Few distinct dates make ties; some lie in the future, some are exactly now.
        const int spread = upTo(1) == 0 ? 6 : 1000;
        for (int i = 0; i < size; ++i) {
            const auto name = std::to_string(upTo(500));
            if (upTo(99) < undatedShare)
                profiles[name] = upTo(1) == 0 ? Value::Dictionary{}
                                              : Value::Dictionary{{"server", "https://u"}};
            else
                profiles[name] = profileRecord("https://s", now() - spread / 2 + upTo(spread));
        }
        auto expected = profiles;
        trimPassByPass(expected, platform.clock.time);
        store.trimProfiles(profiles);
        ASSERT_EQ(profiles, expected) << "round " << round;
    }
}

// Pass by pass this would be ten thousand million steps.
TEST_F(TrimProfilesTest, AHundredThousandProfilesCostNoMoreThanSortingThem)
{
    ProfileMap profiles;
    for (int i = 0; i < 100'000; ++i)
        profiles["server " + std::to_string(i)]
            = profileRecord("https://s" + std::to_string(i), now() - 1 - (i * 7919) % 100'000);
    profiles["undated"] = Value::Dictionary{};
    const auto start = std::chrono::steady_clock::now();
    store.trimProfiles(profiles);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    ASSERT_EQ(profiles.size(), 39U);
    for (const auto& [name, record] : profiles)
        EXPECT_GE(record.dictionary()->at("date").date()->secondsSince1970, now() - 39);
}

} // namespace

} // namespace zarn
