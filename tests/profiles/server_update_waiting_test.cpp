// SPDX-License-Identifier: MIT
// What counts is what was asked, whatever the user does to the fields while the server thinks.
#include "base/base64.h"
#include "profiles/server_update.h"
#include "tests/log/watching_clock.h"
#include "tests/profiles/flow_fixture.h"

namespace zarn {

namespace {

class ServerUpdateWaitingTest : public FlowTest {
protected:
    /// "A" at host "a" is current, in username mode.
    void loadShownProfile()
    {
        storeProfile("A", "https://a:8443/", 3);
        actions().values
            = {{"currentServer", "A"}, {"username", "admin"}, {"useUsername", 1}, {"hideCreds", 1}};
        load();
        typeCredentials("admin", "proven");
    }
    std::string currentProfileItem(std::string_view json) const
    {
        return "ZPMA-zortcuts/zortcuts=" + base64Encoded(json);
    }
};

TEST_F(ServerUpdateWaitingTest, WhatIsTypedMeanwhileIsNotSaved)
{
    loadShownProfile();
    press();
    typeCredentials("somebody", "unproven");
    field("zarnProServer_textfield").setStringValue("https://elsewhere");
    answerSuccess();
    queue.runAll();
    EXPECT_EQ(keychainItems(),
        (std::vector<std::string>{"ZPMA-a/admin=proven",
            currentProfileItem(
                R"({"server":"https://a:8443", "username":"admin", "password":"proven", "useApiClient":"0"})")}));
    EXPECT_EQ(actions().values.at("username"), Value("admin"));
}

TEST_F(ServerUpdateWaitingTest, TheModeAtTheMomentOfSuccessChoosesThePrefixAndStandsInTheText)
{
    loadShownProfile();
    press();
    click("useUsername_button"); // Off: API client.
    platform.urlSessions.reply(200, R"({"token":"t0k3n"})");
    platform.urlSessions.reply(200, R"({"version":"10.40.0"})");
    platform.urlSessions.deliverAll();
    queue.runAll();
    EXPECT_EQ(keychainItems(),
        (std::vector<std::string>{"zortcuts-apiClient-a/admin=proven",
            currentProfileItem(
                R"({"server":"https://a:8443", "username":"admin", "password":"proven", "useApiClient":"1"})")}));
}

TEST_F(ServerUpdateWaitingTest, AnAddedServerIsTheOneThatWasAskedUnderTheNameItHasNow)
{
    load();
    fillInNewServer("Before", "https://new");
    press();
    type("displayName_TextField", "After");
    field("zarnProServer_textfield").setStringValue("https://elsewhere");
    answerSuccess();
    EXPECT_EQ(storedProfiles(),
        (ProfileMap{
            {"After", profileRecord("https://new", platform.clock.time.secondsSince1970)}}));
    EXPECT_EQ(actions().values.at("currentServer"), Value("After"));
    EXPECT_EQ(alerts.shown, (std::vector<std::string>{"|After was successfully set|Quit"}));
}

TEST_F(ServerUpdateWaitingTest, TheDateOfAnAddedServerIsThatOfItsSuccess)
{
    load();
    fillInNewServer("New", "https://new");
    press();
    platform.clock.time.secondsSince1970 += 59;
    answerSuccess();
    EXPECT_EQ(storedProfiles().at("New"),
        Value(profileRecord("https://new", platform.clock.time.secondsSince1970)));
}

TEST_F(ServerUpdateWaitingTest, TheTitleOfTheUpdateButtonDecidesWhetherAProfileIsAdded)
{
    loadShownProfile();
    const auto before = storedProfiles();
    memory::MemoryButton other;
    other.setTitle("Add");
    field("displayName_TextField").type("New");
    login->performAction("updateServerInfo_Action", &other);
    answerSuccess();
    EXPECT_EQ(storedProfiles(), before);
    EXPECT_EQ(actions().values.at("currentServer"), Value("New"));
    fillInNewServer("New", "https://new");
    other.setTitle("Set");
    login->performAction("updateServerInfo_Action", &other);
    answerSuccess();
    EXPECT_TRUE(storedProfiles().contains("New"));
}

TEST_F(ServerUpdateWaitingTest, AFailureNamesTheHostThatWasAsked)
{
    loadShownProfile();
    press();
    field("zarnProServer_textfield").setStringValue("https://elsewhere");
    answerNothing();
    EXPECT_EQ(alerts.shown.back(), "|Failed to connect to a|Quit");
    EXPECT_EQ(logMessages().back(),
        "[LoginVC.updateServerInfo] failed to connect to a.  Verify url and port.");
    field("zarnProServer_textfield").setStringValue("https://a");
    press();
    field("zarnProServer_textfield").setStringValue("https://elsewhere");
    answer(403);
    EXPECT_EQ(logMessages().back(),
        "LoginVC.updateServerInfo] Failed to authenticate to a.  Response error: 403.");
}

class FailureOrderTest : public FlowTest {
protected:
    WatchingClock watching{[this] { events().push_back("log line"); }};
    LogFile watchedFile{{platform.fileManager, watching, platform.dateFormatter}};
    WriteToLog watchedLog{watchedFile};
};

TEST_F(FailureOrderTest, TheServerFieldIsFreedThenTheFailureLoggedThenShown)
{
    watchedFile.startNewLogFile();
    load(watchedLog);
    fillInNewServer("New", "https://new");
    const struct {
        int status;
        const char* alert;
    } rows[] = {{0, "alert |Failed to connect to new|Quit"},
        {401, "alert |Failed to authenticate. HTTP status code: 401|Quit"}};
    for (const auto& row : rows) {
        press();
        if (row.status == 0)
            platform.urlSessions.replyNothing();
        else
            platform.urlSessions.reply(row.status, "");
        recordControls();
        platform.urlSessions.deliverAll();
        EXPECT_EQ(events(),
            (std::vector<std::string>{"zarnProServer_textfield editable", "log line", row.alert,
                "updateServerInfo_Button enabled", "spinner_PI stop", "quit_Button enabled"}));
    }
}

} // namespace

} // namespace zarn
