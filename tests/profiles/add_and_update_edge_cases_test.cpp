// SPDX-License-Identifier: MIT
#include "base/base64.h"
#include "tests/profiles/flow_fixture.h"

namespace zarn {

namespace {

class AddAndUpdateEdgeCases : public FlowTest {
protected:
    void loadShownProfile()
    {
        storeProfile("A", "https://host:8443", 5);
        actions().values
            = {{"currentServer", "A"}, {"username", "admin"}, {"useUsername", 1}, {"hideCreds", 1}};
        load();
        typeCredentials("admin", "secret");
        events().clear();
    }
};

TEST_F(AddAndUpdateEdgeCases, AddingWithoutANameOffersTheHostAndOkValidatesUnderIt)
{
    load();
    fillInNewServer("", "https://host:8443");
    press();
    EXPECT_EQ(alerts.shown,
        (std::vector<std::string>{"Attention:|Display name cannot be blank.\nUse host?|Cancel"}));
    EXPECT_EQ(nameText(), "host");
    EXPECT_EQ(platform.urlSessions.running(), 1U);
}

TEST_F(
    AddAndUpdateEdgeCases, AddingWithoutANameAndCancelStopsWithTheSpinnerRunningAndCancelDisabled)
{
    load();
    fillInNewServer("", "https://host:8443");
    alerts.answers = {"Cancel"};
    press();
    EXPECT_TRUE(window.outlets.spinner.isAnimating());
    EXPECT_EQ(button("quit_Button").title(), "Cancel");
    EXPECT_FALSE(button("quit_Button").isEnabled());
    EXPECT_TRUE(platform.urlSessions.requests.empty());
    EXPECT_EQ(nameText(), "");
}

TEST_F(AddAndUpdateEdgeCases, AddingWithNeitherNameNorServerDoesNothingAfterOk)
{
    load();
    fillInNewServer("", "");
    press();
    EXPECT_EQ(alerts.shown,
        (std::vector<std::string>{"Attention:|Display name cannot be blank.\nUse ?|Cancel"}));
    EXPECT_TRUE(platform.urlSessions.requests.empty());
    EXPECT_EQ(nameText(), "");
    EXPECT_TRUE(button("updateServerInfo_Button").isEnabled());
    EXPECT_TRUE(window.outlets.spinner.isAnimating());
    EXPECT_FALSE(button("quit_Button").isEnabled());
}

TEST_F(AddAndUpdateEdgeCases,
    SetChecksNoNameAndChangesNoProfileButWritesEntriesCurrentServerAndUsername)
{
    for (const auto* name : {"", "A", "something else"}) {
        loadShownProfile();
        field("displayName_TextField").type(name);
        platform.keychain.items.clear();
        const auto before = storedProfiles();
        press();
        answerSuccess();
        queue.runAll();
        EXPECT_EQ(storedProfiles(), before);
        EXPECT_EQ(alerts.shown.back(), "|A was successfully set|Quit");
        EXPECT_EQ(settingsWrites(),
            (std::vector<std::string>{"set group.Q7X2M9K4TA.zarnactions currentServer",
                "set group.Q7X2M9K4TA.zarnactions username"}));
        EXPECT_EQ(actions().values.at("currentServer"), Value(name));
        EXPECT_EQ(actions().values.at("username"), Value("admin"));
        ASSERT_EQ(keychainItems().size(), 2U);
        EXPECT_EQ(keychainItems().at(0), "ZPMA-host/admin=secret");
        EXPECT_EQ(keychainItems().at(1),
            "ZPMA-zortcuts/zortcuts="
                + base64Encoded(
                    R"({"server":"https://host:8443", "username":"admin", "password":"secret", "useApiClient":"0"})"));
    }
}

TEST_F(AddAndUpdateEdgeCases, ATrailingSlashStaysInTheProfileAndNotInTheCurrentProfileText)
{
    load();
    addServer("A", "https://host:8443//");
    queue.runAll();
    EXPECT_EQ(storedProfiles().at("A").dictionary()->at("server"), Value("https://host:8443//"));
    EXPECT_EQ(keychainItems().at(1),
        "ZPMA-zortcuts/zortcuts="
            + base64Encoded(
                R"({"server":"https://host:8443", "username":"id", "password":"secret", "useApiClient":"1"})"));
}

TEST_F(AddAndUpdateEdgeCases, AWrongPasswordIsLoggedAndShownInTheseWords)
{
    loadShownProfile();
    press();
    answer(401);
    EXPECT_EQ(logMessages().back(),
        "LoginVC.updateServerInfo] Failed to authenticate to host.  Response error: 401.");
    EXPECT_EQ(alerts.shown,
        (std::vector<std::string>{"|Failed to authenticate. HTTP status code: 401|Quit"}));
}

TEST_F(AddAndUpdateEdgeCases, AnUnreachableServerIsShownInTheseWordsAndItsFieldIsEditableAgain)
{
    loadShownProfile();
    press();
    EXPECT_FALSE(field("zarnProServer_textfield").isEditable());
    answerNothing();
    EXPECT_EQ(alerts.shown, (std::vector<std::string>{"|Failed to connect to host|Quit"}));
    EXPECT_TRUE(field("zarnProServer_textfield").isEditable());
}

TEST_F(AddAndUpdateEdgeCases, QuitInAnyResultAlertEndsTheApplicationAfterTheButtonsWereRestored)
{
    for (const int outcome : {200, 401, 0}) {
        loadShownProfile();
        alerts.answers = {"Quit"};
        bool restored = false;
        platform.application.onTerminate = [&] {
            restored = button("updateServerInfo_Button").isEnabled()
                && !window.outlets.spinner.isAnimating();
        };
        press();
        if (outcome == 200)
            answerSuccess();
        else if (outcome == 0)
            answerNothing();
        else
            answer(outcome);
        EXPECT_TRUE(restored) << outcome;
        EXPECT_EQ(std::count(events().begin(), events().end(), "terminate"), 1) << outcome;
        EXPECT_TRUE(button("quit_Button").isEnabled());
    }
}

TEST_F(AddAndUpdateEdgeCases, WithFortyProfilesAnAddFirstEvictsTheOldestAndHoldsFortyAgain)
{
    storeNumberedProfiles(39);
    load();
    addServer("fortieth", "https://f");
    ASSERT_EQ(storedProfiles().size(), 40U);
    addServer("new", "https://new");
    EXPECT_EQ(storedProfiles().size(), 40U);
    EXPECT_FALSE(storedProfiles().contains("server 1000"));
    EXPECT_TRUE(storedProfiles().contains("server 1001"));
    EXPECT_TRUE(storedProfiles().contains("new"));
}

} // namespace

} // namespace zarn
