// SPDX-License-Identifier: MIT
#include "profiles/server_update.h"

#include "base/base64.h"
#include "tests/profiles/flow_fixture.h"

namespace zarn {

namespace {

constexpr const char* tokenReply = R"({"token":"t0k3n"})";

class ServerUpdateTest : public FlowTest {
protected:
    /// Two profiles, "A" current, in username mode.
    void loadProfiles()
    {
        storeProfile("A", "https://a:8443/", 3);
        storeProfile("B", "https://b", 2);
        actions().values
            = {{"currentServer", "A"}, {"username", "admin"}, {"useUsername", 1}, {"hideCreds", 1}};
        load();
    }
    /// Without profiles: the view starts in add mode.
    void loadAddMode(const std::string& name, const std::string& url)
    {
        load();
        type("displayName_TextField", name);
        typeServer(url);
        typeCredentials("id", "secret");
        events().clear();
    }
    std::vector<std::string> eventsOf(std::string_view prefix) const
    {
        std::vector<std::string> found;
        for (const auto& event : platform.events) {
            if (event.starts_with(prefix))
                found.push_back(event);
        }
        return found;
    }
    void expectIdle(bool serverEditable)
    {
        EXPECT_TRUE(button("quit_Button").isEnabled());
        EXPECT_TRUE(button("updateServerInfo_Button").isEnabled());
        EXPECT_FALSE(window.outlets.spinner.isAnimating());
        EXPECT_EQ(field("zarnProServer_textfield").isEditable(), serverEditable);
    }
    void expectWaiting()
    {
        EXPECT_FALSE(button("quit_Button").isEnabled());
        EXPECT_FALSE(button("updateServerInfo_Button").isEnabled());
        EXPECT_TRUE(window.outlets.spinner.isAnimating());
        EXPECT_FALSE(field("zarnProServer_textfield").isEditable());
    }
};

TEST_F(ServerUpdateTest, TheCurrentProfileTextFollowsItsTemplate)
{
    ConnectionState state;
    state.serverUrl = "https://host:8443//";
    state.username = "admin";
    state.password = "s3cret";
    state.useApiClient = 0;
    EXPECT_EQ(currentProfileJson(state),
        R"({"server":"https://host:8443", "username":"admin", "password":"s3cret", "useApiClient":"0"})");
    state.useApiClient = 1;
    EXPECT_TRUE(currentProfileJson(state).ends_with(R"("useApiClient":"1"})"));
    EXPECT_EQ(currentProfileJson({}),
        R"({"server":"", "username":"", "password":"", "useApiClient":"1"})");
}

TEST_F(ServerUpdateTest, QuotesAndBackslashesGoIntoTheCurrentProfileTextAsTheyAre)
{
    ConnectionState state;
    state.serverUrl = "s";
    state.username = "a\"b";
    state.password = "c\\d\"";
    EXPECT_EQ(currentProfileJson(state),
        R"({"server":"s", "username":"a"b", "password":"c\d"", "useApiClient":"1"})");
}

TEST_F(ServerUpdateTest, AClickDisablesAndAsksTheServerInThisOrder)
{
    loadProfiles();
    typeCredentials("admin", "secret");
    recordControls();
    press();
    EXPECT_EQ(events(),
        (std::vector<std::string>{"quit_Button disabled", "spinner_PI start",
            "zarnProServer_textfield not editable", "updateServerInfo_Button disabled",
            "empty the URL cache", "request POST https://a:8443/api/v1/auth/token"}));
    expectWaiting();
}

TEST_F(ServerUpdateTest, TheFieldsGoIntoTheConnectionStateExactlyAsTyped)
{
    loadAddMode("New", " https://h:8443// ");
    typeCredentials("n\xc3\xa4me", "p:w");
    press();
    EXPECT_EQ(connection.serverUrl, " https://h:8443// ");
    EXPECT_EQ(connection.username, "n\xc3\xa4me");
    EXPECT_EQ(connection.password, "p:w");
    EXPECT_EQ(connection.base64Creds, "bsOkbWU6cDp3");
}

TEST_F(ServerUpdateTest, CredentialsAreEncodedInBothModes)
{
    loadAddMode("New", "https://h");
    ASSERT_EQ(connection.useApiClient, 1);
    press();
    EXPECT_EQ(connection.base64Creds, "aWQ6c2VjcmV0");
    EXPECT_EQ(platform.urlSessions.requests.front().body,
        "grant_type=client_credentials&client_id=id&client_secret=secret");
}

TEST_F(ServerUpdateTest, ASecondClickWhileWaitingIsNotPossible)
{
    loadProfiles();
    press();
    EXPECT_FALSE(window.click("updateServerInfo_Button"));
    EXPECT_EQ(platform.urlSessions.requests.size(), 1U);
}

TEST_F(ServerUpdateTest, CancellingTheQuestionStopsWithTheSpinnerRunning)
{
    loadAddMode("", "https://host:8443");
    alerts.answers = {"Cancel"};
    recordControls();
    press();
    EXPECT_EQ(events(),
        (std::vector<std::string>{"quit_Button disabled", "spinner_PI start",
            "alert Attention:|Display name cannot be blank.\nUse host?|Cancel"}));
    EXPECT_TRUE(window.outlets.spinner.isAnimating());
    EXPECT_FALSE(button("quit_Button").isEnabled());
    EXPECT_TRUE(button("updateServerInfo_Button").isEnabled());
    EXPECT_TRUE(field("zarnProServer_textfield").isEditable());
    EXPECT_EQ(connection.serverUrl, "");
}

TEST_F(ServerUpdateTest, ALaterClickThatCompletesRestoresTheButtons)
{
    loadAddMode("", "https://host");
    alerts.answers = {"Cancel"};
    press();
    type("displayName_TextField", "Named");
    press();
    answerSuccess();
    expectIdle(false);
}

TEST_F(ServerUpdateTest, AnAcceptedHostBecomesTheDisplayName)
{
    loadAddMode("", "https://host:8443");
    press();
    EXPECT_EQ(nameText(), "host");
    answerSuccess();
    EXPECT_TRUE(storedProfiles().contains("host"));
    EXPECT_EQ(selectedTitle(), "host");
}

TEST_F(ServerUpdateTest, TheHostIsTakenFromTheFieldAgainAfterTheQuestion)
{
    loadAddMode("", "https://before");
    alerts.whileOpen = [this] { typeServer("https://after"); };
    press();
    EXPECT_EQ(alerts.shown.front(), "Attention:|Display name cannot be blank.\nUse before?|Cancel");
    EXPECT_EQ(nameText(), "after");
}

TEST_F(ServerUpdateTest, ANameOfBlanksIsAName)
{
    loadAddMode(" ", "https://host");
    press();
    EXPECT_TRUE(alerts.shown.empty());
    answerSuccess();
    EXPECT_TRUE(storedProfiles().contains(" "));
}

TEST_F(ServerUpdateTest, SetLetsABlankNameThrough)
{
    loadProfiles();
    field("displayName_TextField").type("");
    press();
    EXPECT_TRUE(alerts.shown.empty());
    expectWaiting();
    answerSuccess();
    EXPECT_EQ(actions().values.at("currentServer"), Value(""));
}

TEST_F(ServerUpdateTest, TheTitleOfTheSenderDecidesAboutTheQuestion)
{
    loadProfiles();
    field("displayName_TextField").type("");
    memory::MemoryButton other;
    other.setTitle("Add");
    alerts.answers = {"Cancel"};
    login->performAction("updateServerInfo_Action", &other);
    EXPECT_EQ(alerts.shown.size(), 1U);
}

TEST_F(ServerUpdateTest, AnAddedServerIsSavedAndShownInThisOrder)
{
    loadAddMode("New", "https://new:8443/");
    press();
    recordControls();
    answerSuccess();
    std::erase_if(events(), [](const std::string& event) {
        return event.starts_with("request") || event.starts_with("empty the URL");
    });
    EXPECT_EQ(events(),
        (std::vector<std::string>{"set group.R3V8N1P6WB.zarnie.SharedZPMA serversDict",
            "selectServer_Button remove all", "selectServer_Button add New",
            "selectServer_Button separator at 1", "selectServer_Button add Add Server...",
            "selectServer_Button select New", "set group.Q7X2M9K4TA.zarnactions currentServer",
            "set group.Q7X2M9K4TA.zarnactions username", "displayName_Label = Server:",
            "selectServer_Button shown", "displayName_TextField hidden", "quit_Button titled Quit",
            "updateServerInfo_Button titled Set", "alert |New was successfully set|Quit",
            "updateServerInfo_Button enabled", "spinner_PI stop", "quit_Button enabled"}));
    expectIdle(false);
    EXPECT_EQ(queue.pending(), 2U);
}

TEST_F(ServerUpdateTest, BothSecretsAreHandedOverBeforeTheProfileIsSaved)
{
    loadAddMode("New", "https://new");
    queue.events = &events();
    for (int round = 0; round < 2; ++round) { // An add, then a set.
        press();
        events().clear();
        answerSuccess();
        std::erase_if(events(), [](const std::string& event) {
            return !event.starts_with("async") && !event.starts_with("set ");
        });
        ASSERT_EQ(events().size(), round == 0 ? 5U : 4U);
        EXPECT_EQ(events()[0], "async com.zarn.zarn-shortcuts");
        EXPECT_EQ(events()[1], "async com.zarn.zarn-shortcuts");
        EXPECT_EQ(events()[2],
            round == 0 ? "set group.R3V8N1P6WB.zarnie.SharedZPMA serversDict"
                       : "set group.Q7X2M9K4TA.zarnactions currentServer");
    }
}

TEST_F(ServerUpdateTest, AnAddedServerIsWhereOtherProgramsFindIt)
{
    loadAddMode("New", "https://new:8443/");
    press();
    answerSuccess();
    queue.runAll();
    EXPECT_EQ(storedProfiles(),
        (ProfileMap{
            {"New", profileRecord("https://new:8443/", platform.clock.time.secondsSince1970)}}));
    EXPECT_EQ(actions().values.at("currentServer"), Value("New"));
    EXPECT_EQ(actions().values.at("username"), Value("id"));
    EXPECT_EQ(keychainItems(),
        (std::vector<std::string>{"zortcuts-apiClient-new/id=secret",
            "ZPMA-zortcuts/zortcuts="
            "eyJzZXJ2ZXIiOiJodHRwczovL25ldzo4NDQzIiwgInVzZXJuYW1lIjoiaWQiLCAicGFzc3dvcmQiOiJzZWNyZX"
            "Qi"
            "LCAidXNlQXBpQ2xpZW50IjoiMSJ9"}));
}

TEST_F(ServerUpdateTest, TheSecretsAreSavedWhateverTheSaveCredentialsBoxSays)
{
    for (const int state : {0, 1}) {
        loadProfiles();
        button("saveCreds_button").setState(state);
        typeCredentials("admin", "secret" + std::to_string(state));
        press();
        answerSuccess();
        EXPECT_EQ(queue.pending(), 2U);
        queue.runAll();
        EXPECT_EQ(keychainItems().front(), "ZPMA-a/admin=secret" + std::to_string(state));
    }
}

TEST_F(ServerUpdateTest, ASetServerChangesNoProfile)
{
    loadProfiles();
    platform.clock.time.secondsSince1970 += 1000;
    const auto before = storedProfiles();
    typeCredentials("new admin", "secret");
    recordControls();
    press();
    answerSuccess();
    EXPECT_EQ(storedProfiles(), before);
    EXPECT_EQ(eventsOf("set "),
        (std::vector<std::string>{"set group.Q7X2M9K4TA.zarnactions currentServer",
            "set group.Q7X2M9K4TA.zarnactions username"}));
    EXPECT_EQ(actions().values.at("username"), Value("new admin"));
    EXPECT_TRUE(eventsOf("selectServer_Button select").empty());
    EXPECT_EQ(alerts.shown, (std::vector<std::string>{"|A was successfully set|Quit"}));
    EXPECT_EQ(queue.pending(), 2U);
}

TEST_F(ServerUpdateTest, AddingUnderAnExistingNameReplacesTheProfileWhole)
{
    loadProfiles();
    addServer("A", "https://elsewhere");
    EXPECT_EQ(storedProfiles().at("A"),
        Value(profileRecord("https://elsewhere", platform.clock.time.secondsSince1970)));
    EXPECT_EQ(storedProfiles().size(), 2U);
    EXPECT_EQ(window.outlets.popUp.shownItems(),
        (std::vector<std::string>{"A", "B", "-", "Add Server..."}));
    EXPECT_EQ(login->model().sortedDisplayNames, (std::vector<std::string>{"A", "A", "B"}));
    // Removing it removes every equal entry.
    platform.application.modifierFlags = modifierFlagOption;
    choose("A");
    EXPECT_EQ(login->model().sortedDisplayNames, (std::vector<std::string>{"B"}));
}

TEST_F(ServerUpdateTest, AnAddedNameIsSortedIn)
{
    loadProfiles();
    addServer("Aa", "https://x");
    EXPECT_EQ(window.outlets.popUp.shownItems(),
        (std::vector<std::string>{"A", "Aa", "B", "-", "Add Server..."}));
    EXPECT_EQ(selectedTitle(), "Aa");
}

TEST_F(ServerUpdateTest, TheResultMessageNamesTheChosenItem)
{
    loadProfiles();
    choose("B");
    field("displayName_TextField").type("typed over");
    press();
    answerSuccess();
    EXPECT_EQ(alerts.shown.back(), "|B was successfully set|Quit");
    EXPECT_EQ(actions().values.at("currentServer"), Value("typed over"));
}

TEST_F(ServerUpdateTest, AnUnreachableServerIsLoggedAndShown)
{
    loadProfiles();
    recordControls();
    press();
    platform.urlSessions.replyNothing();
    events().clear();
    platform.urlSessions.deliverAll();
    EXPECT_EQ(events(),
        (std::vector<std::string>{"zarnProServer_textfield editable",
            "alert |Failed to connect to a|Quit", "updateServerInfo_Button enabled",
            "spinner_PI stop", "quit_Button enabled"}));
    EXPECT_EQ(logMessages().back(),
        "[LoginVC.updateServerInfo] failed to connect to a.  Verify url and port.");
    expectIdle(true);
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(ServerUpdateTest, RejectedCredentialsAreLoggedAndShown)
{
    const struct {
        int status;
        const char* logLine;
        const char* alert;
    } rows[] = {
        {401, "LoginVC.updateServerInfo] Failed to authenticate to a.  Response error: 401.",
            "|Failed to authenticate. HTTP status code: 401|Quit"},
        {500, "LoginVC.updateServerInfo] Failed to authenticate to a.  Response error: 500.",
            "|Failed to authenticate. HTTP status code: 500|Quit"},
        {302, "LoginVC.updateServerInfo] Failed to authenticate to a.  Response error: 302.",
            "|Failed to authenticate. HTTP status code: 302|Quit"},
    };
    loadProfiles();
    for (const auto& row : rows) {
        press();
        platform.urlSessions.reply(row.status, "");
        platform.urlSessions.deliverAll();
        EXPECT_EQ(logMessages().back(), row.logLine);
        EXPECT_EQ(alerts.shown.back(), row.alert);
        expectIdle(true);
    }
    EXPECT_EQ(queue.pending(), 0U);
    EXPECT_EQ(actions().values.at("currentServer"), Value("A"));
}

TEST_F(ServerUpdateTest, AFailedAddSavesNothingAndStaysInAddMode)
{
    loadAddMode("New", "https://new");
    press();
    platform.urlSessions.reply(401, "");
    platform.urlSessions.deliverAll();
    EXPECT_TRUE(storedProfiles().empty());
    EXPECT_FALSE(actions().values.contains("currentServer"));
    EXPECT_EQ(queue.pending(), 0U);
    EXPECT_EQ(button("updateServerInfo_Button").title(), "Add");
    EXPECT_EQ(button("quit_Button").title(), "Cancel");
    EXPECT_TRUE(window.outlets.popUp.isHidden());
    expectIdle(true);
}

TEST_F(ServerUpdateTest, AnyOtherResultIsSilentAndLeavesTheServerFieldLocked)
{
    loadProfiles();
    press();
    platform.urlSessions.reply(200, "no JSON");
    const auto logged = logMessages().size();
    platform.urlSessions.deliverAll();
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_EQ(logMessages().back().find("LoginVC"), std::string::npos);
    EXPECT_EQ(logMessages().size(), logged + 1); // The client's own.
    EXPECT_EQ(queue.pending(), 0U);
    expectIdle(false);
}

TEST_F(ServerUpdateTest, AUrlThatCannotBeFormedRestoresTheButtonsAtOnce)
{
    loadAddMode("New", "https://with blank");
    press();
    EXPECT_TRUE(platform.urlSessions.requests.empty());
    EXPECT_TRUE(alerts.shown.empty());
    expectIdle(false);
}

TEST_F(ServerUpdateTest, AValidationThatNeverCallsBackLeavesTheViewWaiting)
{
    loadProfiles();
    press();
    platform.urlSessions.reply(200, tokenReply);
    platform.urlSessions.reply(200, R"({"version":""})");
    platform.urlSessions.deliverAll();
    expectWaiting();
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(ServerUpdateTest, QuitInTheResultAlertEndsTheApplicationBetweenTheTwoButtons)
{
    loadProfiles();
    for (const int status : {0, 401, 200}) {
        press();
        recordControls();
        alerts.answers = {"Quit"};
        if (status == 200) {
            answerSuccess();
        } else {
            status == 0 ? platform.urlSessions.replyNothing()
                        : platform.urlSessions.reply(status, "");
            platform.urlSessions.deliverAll();
        }
        const std::vector<std::string> last(events().end() - 4, events().end());
        EXPECT_EQ(last,
            (std::vector<std::string>{"updateServerInfo_Button enabled", "spinner_PI stop",
                "terminate", "quit_Button enabled"}))
            << status;
    }
}

TEST_F(ServerUpdateTest, OkInTheResultAlertDoesNotEndTheApplication)
{
    loadProfiles();
    press();
    answerSuccess();
    EXPECT_TRUE(eventsOf("terminate").empty());
}

TEST_F(ServerUpdateTest, AQuitOfAnEarlierClickIsForgotten)
{
    loadProfiles();
    alerts.answers = {"Quit"};
    press();
    platform.urlSessions.deliverAll();
    events().clear();
    press();
    platform.urlSessions.reply(200, "no JSON");
    platform.urlSessions.deliverAll();
    EXPECT_TRUE(eventsOf("terminate").empty());
}

TEST_F(ServerUpdateTest, AReplyAfterTheViewIsGoneDoesNothing)
{
    loadProfiles();
    press();
    window.controller.reset();
    const auto before = storedProfiles();
    answerSuccess();
    EXPECT_EQ(storedProfiles(), before);
    EXPECT_EQ(queue.pending(), 0U);
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(ServerUpdateTest, AProfileIsSavedWhateverTheKeychainSays)
{
    platform.keychain.addStatus = keychain_status::interactionNotAllowed;
    loadAddMode("New", "https://new");
    press();
    answerSuccess();
    queue.runAll();
    EXPECT_TRUE(keychainItems().empty());
    EXPECT_TRUE(storedProfiles().contains("New"));
    EXPECT_EQ(alerts.shown, (std::vector<std::string>{"|New was successfully set|Quit"}));
}

TEST_F(ServerUpdateTest, NoSecretReachesLogConsoleOrSettings)
{
    loadAddMode("New", "https://new");
    typeCredentials("id", "pl4nted");
    press();
    answerSuccess();
    queue.runAll();
    for (const auto* text : {"pl4nted", "cGw0bnRlZA", "aWQ6cGw0bnRlZA", "t0k3n"}) {
        for (const auto& [path, contents] : platform.fileManager.files)
            EXPECT_EQ(contents.find(text), std::string::npos) << text;
        for (const auto& line : platform.console.lines)
            EXPECT_EQ(line.find(text), std::string::npos) << text;
        for (const auto* values : {&shared().values, &actions().values, &standard().values})
            EXPECT_EQ(describe(Value(*values)).find(text), std::string::npos) << text;
        for (const auto& alert : alerts.shown)
            EXPECT_EQ(alert.find(text), std::string::npos) << text;
    }
}

// --- Edge cases

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
