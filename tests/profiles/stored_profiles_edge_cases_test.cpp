// SPDX-License-Identifier: MIT
#include "profiles/server_url.h"
#include "tests/profiles/flow_fixture.h"

namespace zarn {

namespace {

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
    EXPECT_DEATH(choose("server 1000"), "a menu title without a stored profile");
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

} // namespace

} // namespace zarn
