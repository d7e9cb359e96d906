// SPDX-License-Identifier: MIT
#include "profiles/login_vc.h"
#include "tests/profiles/login_fixture.h"

namespace zarn {

namespace {

class LoginStartTest : public LoginTest { };

using LoginStartDeathTest = LoginStartTest;

TEST_F(LoginStartTest, AMissingLogFileIsStarted)
{
    load();
    EXPECT_EQ(logFile.logFileName(), "20250301_101500_zarn-shortcuts.log");
    EXPECT_TRUE(platform.fileManager.files.contains(
        "/home/test/Library/Logs/20250301_101500_zarn-shortcuts.log"));
    EXPECT_TRUE(logMessages().empty());
}

TEST_F(LoginStartTest, AnExistingLogFileIsKept)
{
    platform.fileManager.files["/home/test/Library/Logs/zarn-shortcuts.log"] = "";
    load();
    EXPECT_EQ(logFile.logFileName(), "zarn-shortcuts.log");
    EXPECT_EQ(platform.fileManager.files.size(), 1U);
}

TEST_F(LoginStartTest, TheStepsOfAStartWithACurrentProfileComeInTheirOrder)
{
    storeProfile("A", "https://a:8443/");
    storeProfile("B", "https://b");
    storeSecret("ZPMA-a", "admin", "secret");
    actions().values
        = {{"currentServer", "A"}, {"username", "admin"}, {"useUsername", 1}, {"hideCreds", 1}};
    standard().values["saveCreds"] = 1;
    memory::layOut("LoginVC", window.outlets);
    for (const auto* name : {"hideCreds_button", "saveCreds_button"})
        button(name);
    for (const auto* name : {"zarnProPassword_textfield"})
        field(name);
    for (const auto* name : {"username_label", "password_label"})
        window.outlets.labelNamed(name);
    recordControls();
    load();
    const auto& happened = events();
    const std::vector<std::string> expected{
        "create /home/test/Library/Logs/20250301_101500_zarn-shortcuts.log",
        "list /home/test/Library/Logs/", "size 518 x 208",
        "hideCreds_button tooltip hide username/password fields", "zarnProServer_textfield shown",
        "zarnProUsername_textfield shown", "zarnProPassword_textfield shown",
        "serverURL_Label shown", "username_label shown", "password_label shown",
        "hideCreds_button state 1", "hideCreds_button image down",
        "zarnProServer_textfield delegate", "zarnProUsername_textfield delegate",
        "zarnProPassword_textfield delegate", "useUsername_button state 1",
        "username_label = Username:", "password_label = Password:", "displayName_TextField = A",
        "zarnProServer_textfield = https://a:8443/", "zarnProUsername_textfield = admin",
        "selectServer_Button select A", "selectServer_Button remove all",
        "selectServer_Button add A", "selectServer_Button add B",
        "selectServer_Button separator at 2", "selectServer_Button add Add Server...",
        "selectServer_Button select A", "saveCreds_button state 1", "keychain copy ZPMA-a/*",
        "zarnProUsername_textfield = admin", "zarnProPassword_textfield = secret", "activate"};
    // What the storyboard itself sets up comes before.
    ASSERT_GE(happened.size(), expected.size());
    EXPECT_EQ((std::vector<std::string>(
                  happened.end() - static_cast<std::ptrdiff_t>(expected.size()), happened.end())),
        expected);
}

TEST_F(LoginStartTest, TheStepsOfAStartWithoutProfilesComeInTheirOrder)
{
    memory::layOut("LoginVC", window.outlets);
    for (const auto* name : {"hideCreds_button", "saveCreds_button", "useUsername_button"})
        button(name);
    field("zarnProPassword_textfield");
    for (const auto* name : {"username_label", "password_label"})
        window.outlets.labelNamed(name);
    recordControls();
    load();
    const auto& happened = events();
    const std::vector<std::string> expected{
        "create /home/test/Library/Logs/20250301_101500_zarn-shortcuts.log",
        "list /home/test/Library/Logs/",
        // The fields are hidden at first, as they would be with profiles.
        "size 518 x 85", "hideCreds_button tooltip show username/password fields",
        "zarnProServer_textfield hidden", "zarnProUsername_textfield hidden",
        "zarnProPassword_textfield hidden", "serverURL_Label hidden", "username_label hidden",
        "password_label hidden", "hideCreds_button state 0", "hideCreds_button image right",
        "zarnProServer_textfield delegate", "zarnProUsername_textfield delegate",
        "zarnProPassword_textfield delegate", "useUsername_button state 0",
        "username_label = Client ID:", "password_label = Client Secret:",
        "set group.R3V8N1P6WB.zarnie.SharedZPMA serversDict",
        "remove group.Q7X2M9K4TA.zarnactions currentServer",
        "zarnProServer_textfield = ", "zarnProUsername_textfield = ",
        "zarnProPassword_textfield = ", "selectServer_Button remove all",
        "selectServer_Button separator at 0", "selectServer_Button add Add Server...",
        "selectServer_Button select none", "saveCreds_button state 0",
        // Then add mode, entered as if the item had been chosen.
        "zarnProServer_textfield = ", "selectServer_Button remove all",
        "selectServer_Button separator at 0", "selectServer_Button add Add Server...",
        "selectServer_Button select Add Server...", "updateServerInfo_Button titled Add",
        "displayName_TextField first responder", "displayName_Label = Display Name:",
        "displayName_TextField = ", "selectServer_Button hidden", "displayName_TextField shown",
        "serverURL_Label shown", "zarnProServer_textfield shown",
        "zarnProServer_textfield editable",
        "zarnProServer_textfield = ", "zarnProUsername_textfield = ",
        "zarnProPassword_textfield = ", "useUsername_button state 0", "username_label = Client ID:",
        "password_label = Client Secret:", "saveCreds_button state 0",
        "set group.Q7X2M9K4TA.zarnactions saveCreds", "hideCreds_button hidden",
        "quit_Button titled Cancel", "updateServerInfo_Button titled Add", "size 518 x 208",
        "hideCreds_button tooltip hide username/password fields", "zarnProServer_textfield shown",
        "zarnProUsername_textfield shown", "zarnProPassword_textfield shown",
        "serverURL_Label shown", "username_label shown", "password_label shown",
        "hideCreds_button state 2", "hideCreds_button image down",
        // Once more for the start itself.
        "size 518 x 208", "hideCreds_button tooltip hide username/password fields",
        "zarnProServer_textfield shown", "zarnProUsername_textfield shown",
        "zarnProPassword_textfield shown", "serverURL_Label shown", "username_label shown",
        "password_label shown", "hideCreds_button state 2", "hideCreds_button image down",
        "activate"};
    // What the storyboard itself sets up comes before.
    ASSERT_GE(happened.size(), expected.size());
    EXPECT_EQ((std::vector<std::string>(
                  happened.end() - static_cast<std::ptrdiff_t>(expected.size()), happened.end())),
        expected);
}

TEST_F(LoginStartTest, AStartWithoutACurrentProfileEmptiesTheFieldsAndThenListsTheNames)
{
    storeProfile("B", "https://b", 2);
    storeProfile("A", "https://a", 1);
    memory::layOut("LoginVC", window.outlets);
    for (const auto* name :
        {"zarnProServer_textfield", "zarnProUsername_textfield", "zarnProPassword_textfield"})
        field(name).setStringValue("from the storyboard");
    button("saveCreds_button");
    recordControls();
    load();
    const std::vector<std::string> expected{"remove group.Q7X2M9K4TA.zarnactions currentServer",
        "zarnProServer_textfield = ", "zarnProUsername_textfield = ",
        "zarnProPassword_textfield = ", "selectServer_Button remove all",
        "selectServer_Button add A", "selectServer_Button add B",
        "selectServer_Button separator at 2", "selectServer_Button add Add Server...",
        "selectServer_Button select none", "saveCreds_button state 0", "activate"};
    ASSERT_GE(events().size(), expected.size());
    EXPECT_EQ((std::vector<std::string>(
                  events().end() - static_cast<std::ptrdiff_t>(expected.size()), events().end())),
        expected);
}

TEST_F(LoginStartTest, TheThreeCredentialFieldsReportTheirEndOfEditing)
{
    load();
    for (const auto* name :
        {"zarnProServer_textfield", "zarnProUsername_textfield", "zarnProPassword_textfield"})
        EXPECT_EQ(field(name).delegate(), login) << name;
    EXPECT_EQ(field("displayName_TextField").delegate(), nullptr);
}

TEST_F(LoginStartTest, ADisclosureSettingOtherThanOneHides)
{
    for (const auto& stored : {Value(0), Value(2), Value(-1), Value("yes")}) {
        storeProfile("A", "");
        actions().values["hideCreds"] = stored;
        load();
        EXPECT_EQ(window.view.height, 85);
        EXPECT_EQ(button("hideCreds_button").state(), 0);
        EXPECT_TRUE(field("zarnProServer_textfield").isHidden());
    }
}

TEST_F(LoginStartTest, TheCredentialModeComesFromItsSetting)
{
    const struct {
        Value stored;
        const char* consoleLine;
        int useApiClient;
        const char* usernameLabel;
        const char* passwordLabel;
    } rows[] = {
        {0, "[viewDidLoad] username: 0", 1, "Client ID:", "Client Secret:"},
        {1, "[viewDidLoad] username: 1", 0, "Username:", "Password:"},
        // The check box is on for any number but 0.
        {2, "[viewDidLoad] username: 2", 0, "Username:", "Password:"},
        {-1, "[viewDidLoad] username: -1", 0, "Username:", "Password:"},
        {std::int64_t{1} << 32, "[viewDidLoad] username: 4294967296", 0, "Username:", "Password:"},
    };
    for (const auto& row : rows) {
        storeProfile("A", "https://a");
        actions().values["useUsername"] = row.stored;
        platform.console.lines.clear();
        load();
        EXPECT_EQ(platform.console.lines, (std::vector<std::string>{row.consoleLine}));
        EXPECT_EQ(connection.useApiClient, row.useApiClient) << row.consoleLine;
        EXPECT_EQ(labelText("username_label"), row.usernameLabel);
        EXPECT_EQ(labelText("password_label"), row.passwordLabel);
        EXPECT_EQ(button("useUsername_button").state(), connection.useUsernameState);
    }
}

TEST_F(LoginStartTest, NothingIsWrittenToTheLog)
{
    storeProfile("A", "https://a");
    actions().values["currentServer"] = "A";
    load();
    EXPECT_TRUE(logMessages().empty());
}

TEST_F(LoginStartTest, WithoutACurrentProfileNoItemIsSelectedAndTheFieldsAreEmpty)
{
    storeProfile("A", "https://a", 1);
    storeProfile("B", "https://b", 2);
    load();
    EXPECT_FALSE(window.outlets.popUp.hasSelection());
    EXPECT_EQ(window.outlets.popUp.shownItems(),
        (std::vector<std::string>{"A", "B", "-", "Add Server..."}));
    EXPECT_EQ(serverText() + usernameText() + passwordText() + nameText(), "");
    EXPECT_EQ(login->model().lastServer, "https://b"); // The URL of the newest.
    EXPECT_EQ(login->model().lastServerDN, "");
    EXPECT_EQ(labelText("displayName_Label"), "Server:");
    EXPECT_EQ(button("quit_Button").title(), "Quit");
    EXPECT_EQ(button("updateServerInfo_Button").title(), "Set");
    EXPECT_TRUE(platform.keychain.queries.empty());
}

TEST_F(LoginStartTest, TheNewestProfileIsShownOnlyWhenItsNameIsItsUrl)
{
    storeProfile("https://b", "https://b", 2);
    storeProfile("A", "https://a", 1);
    actions().values["username"] = "admin";
    load();
    EXPECT_EQ(selectedTitle(), "https://b");
    EXPECT_EQ(login->model().lastServerDN, "https://b");
    EXPECT_EQ(nameText(), "https://b");
    EXPECT_EQ(serverText(), "https://b");
    EXPECT_EQ(usernameText(), "admin");
}

TEST_F(LoginStartTest, ACurrentProfileWithoutAUrlIsSelectedWithEmptyServerField)
{
    for (const auto& record : {Value::Dictionary{{"date", Date{1}}},
             Value::Dictionary{{"server", 5}, {"date", Date{1}}}}) {
        shared().values["serversDict"] = Value::Dictionary{{"A", record}};
        actions().values["currentServer"] = "A";
        load();
        EXPECT_EQ(selectedTitle(), "A");
        EXPECT_EQ(serverText(), "");
        EXPECT_TRUE(platform.keychain.queries.empty());
    }
}

TEST_F(LoginStartTest, AMissingUsernameLeavesTheFieldEmpty)
{
    storeProfile("A", "https://a");
    actions().values["currentServer"] = "A";
    load();
    EXPECT_EQ(usernameText(), "");
}

TEST_F(LoginStartTest, ACurrentProfileThatIsTrimmedAwayIsNotShown)
{
    for (int i = 0; i < 39; ++i)
        storeProfile("B" + std::to_string(i), "https://b", 100 + i);
    storeProfile("A", "https://a", 1);
    actions().values["currentServer"] = "A";
    load();
    EXPECT_FALSE(login->model().availableServersDict.contains("A"));
    EXPECT_EQ(login->model().lastServer, "A");
    EXPECT_FALSE(window.outlets.popUp.hasSelection());
    EXPECT_EQ(serverText(), "");
    EXPECT_EQ(storedProfiles().size(), 40U);
    EXPECT_EQ(actions().values.at("currentServer"), Value("A"));
}

TEST_F(LoginStartTest, ACurrentServerWithoutAnyProfileIsForgottenAndMakesNone)
{
    for (const auto& stored : {Value(Value::Dictionary{}), Value("damaged"),
             Value(Value::Dictionary{{"https://a", 1}})}) {
        shared().values["serversDict"] = stored;
        actions().values["currentServer"] = "https://a";
        load();
        EXPECT_EQ(login->model().lastServer, "") << describe(stored);
        EXPECT_EQ(login->model().lastServerDN, "");
        EXPECT_TRUE(login->model().availableServersDict.empty());
        EXPECT_EQ(
            window.outlets.popUp.shownItems(), (std::vector<std::string>{"-", "Add Server..."}));
        EXPECT_FALSE(actions().values.contains("currentServer"));
    }
}

TEST_F(LoginStartTest, OnlyBrokenProfilesLeadToAddMode)
{
    storeProfile("", "https://nameless");
    storeProfile("A", "/no/host");
    load();
    EXPECT_TRUE(login->model().availableServersDict.empty());
    EXPECT_EQ(button("updateServerInfo_Button").title(), "Add");
    EXPECT_EQ(window.outlets.popUp.shownItems(), (std::vector<std::string>{"-", "Add Server..."}));
    EXPECT_TRUE(login->model().sortedDisplayNames.empty());
    EXPECT_EQ(storedProfiles().size(), 2U);
}

TEST_F(LoginStartTest, TheSaveCredentialsBoxComesFromTheStandardDomain)
{
    storeProfile("A", "https://a");
    actions().values["saveCreds"] = 1;
    load();
    EXPECT_EQ(button("saveCreds_button").state(), 0);
    standard().values["saveCreds"] = 1;
    load();
    EXPECT_EQ(button("saveCreds_button").state(), 1);
}

TEST_F(LoginStartTest, TheApplicationComesToTheFrontLast)
{
    load();
    EXPECT_EQ(events().back(), "activate");
    EXPECT_EQ(std::count(events().begin(), events().end(), "activate"), 1);
}

TEST_F(LoginStartTest, TheTermsAreShownEachTimeTheViewAppearsUntilAgreed)
{
    load();
    events().clear();
    login->viewDidAppear();
    login->viewDidAppear();
    EXPECT_EQ(events(), (std::vector<std::string>{"segue termsOfUse", "segue termsOfUse"}));
    standard().values["agreedToTermsOfUse"] = false;
    login->viewDidAppear();
    EXPECT_EQ(events().size(), 3U);
    standard().values["agreedToTermsOfUse"] = true;
    login->viewDidAppear();
    EXPECT_EQ(events().size(), 3U);
}

TEST_F(LoginStartTest, DisappearingStopsObservingTheTheme)
{
    load();
    login->viewWillDisappear();
    EXPECT_EQ(platform.notificationCenter.removals,
        (std::vector<std::string>{"AppleInterfaceThemeChangedNotification"}));
    EXPECT_EQ(platform.notificationCenter.observerCount(), 0U);
}

TEST_F(LoginStartTest, AnUnknownActionIsRefused)
{
    load();
    EXPECT_FALSE(login->performAction("updateServerInfo", nullptr));
    EXPECT_FALSE(login->performAction("", nullptr));
}

TEST_F(LoginStartDeathTest, EveryMissingOutletThatStartUpUsesStopsTheProcessAndIsNamed)
{
    storeProfile("A", "https://a");
    actions().values["currentServer"] = "A";
    for (const std::string name : {"displayName_TextField", "selectServer_Button",
             "useUsername_button", "selectServer_Menu", "hideCreds_button", "serverURL_Label",
             "zarnProServer_textfield", "zarnProUsername_textfield", "zarnProPassword_textfield",
             "username_label", "password_label", "saveCreds_button"}) {
        window.outlets.missing = {name};
        EXPECT_DEATH(load(), "fatal: missing outlet " + name + "\n");
    }
}

TEST_F(LoginStartDeathTest, AnOutletIsMissedOnlyWhenItIsUsed)
{
    storeProfile("A", "https://a");
    actions().values["currentServer"] = "A";
    window.outlets.missing = {"spinner_PI", "quit_Button", "updateServerInfo_Button",
        "selectedServer_ButtonCell", "displayName_Label"};
    load();
    EXPECT_EQ(selectedTitle(), "A");
    EXPECT_DEATH(login->performAction("updateServerInfo_Action", nullptr),
        "fatal: missing outlet updateServerInfo_Button\n");
    EXPECT_DEATH(login->performAction("selectServer_Action", nullptr),
        "fatal: missing outlet selectedServer_ButtonCell\n");
    EXPECT_DEATH(
        login->performAction("quit_Action", nullptr), "fatal: missing outlet quit_Button\n");
}

// --- Leaving add mode

class LeaveAddModeTest : public LoginTest {
protected:
    void loadWithCurrent(const std::string& name)
    {
        actions().values["currentServer"] = name;
        load();
    }
    void cancelAdding()
    {
        choose("Add Server...");
        events().clear();
        click("quit_Button");
    }
};

using LeaveAddModeDeathTest = LeaveAddModeTest;

TEST_F(LeaveAddModeTest, QuitAsksTheApplicationToEndAndDoesNothingElse)
{
    storeProfile("A", "https://a");
    loadWithCurrent("A");
    recordControls();
    click("quit_Button");
    EXPECT_EQ(events(), (std::vector<std::string>{"terminate"}));
}

TEST_F(LeaveAddModeTest, TheTitleOfTheSenderDecides)
{
    storeProfile("A", "https://a");
    loadWithCurrent("A");
    events().clear();
    memory::MemoryButton other;
    other.setTitle("Quit");
    button("quit_Button").setTitle("Cancel");
    login->performAction("quit_Action", &other);
    EXPECT_EQ(events(), (std::vector<std::string>{"terminate"}));
}

TEST_F(LeaveAddModeTest, CancelOutsideAddModeDismissesTheView)
{
    storeProfile("A", "https://a");
    loadWithCurrent("A");
    button("quit_Button").setTitle("Cancel");
    recordControls();
    click("quit_Button");
    EXPECT_EQ(events(), (std::vector<std::string>{"dismiss"}));
}

TEST_F(LeaveAddModeTest, CancelReturnsToAProfileStepByStep)
{
    storeProfile("A", "https://a");
    storeProfile("B", "https://b:8443/");
    storeSecret("zortcuts-apiClient-b", "id", "secret");
    loadWithCurrent("A");
    choose("Add Server...");
    recordControls();
    click("quit_Button");
    EXPECT_EQ(events(),
        (std::vector<std::string>{"displayName_Label = Server:", "selectServer_Button shown",
            "displayName_TextField hidden", "serverURL_Label shown",
            "zarnProServer_textfield shown", "zarnProServer_textfield not editable",
            "hideCreds_button shown", "useUsername_button state 0", "username_label = Client ID:",
            "password_label = Client Secret:", "selectServer_Button select B",
            "displayName_TextField = B", "zarnProServer_textfield = https://b:8443/",
            "keychain copy zortcuts-apiClient-b/*", "zarnProUsername_textfield = id",
            "zarnProPassword_textfield = secret", "quit_Button titled Quit",
            "updateServerInfo_Button titled Set"}));
}

TEST_F(LeaveAddModeTest, CancelWithoutARememberedServerDisablesStepByStep)
{
    load();
    recordControls();
    click("quit_Button");
    EXPECT_EQ(events(),
        (std::vector<std::string>{"displayName_Label = Server:", "selectServer_Button shown",
            "displayName_TextField hidden", "serverURL_Label shown",
            "zarnProServer_textfield shown", "zarnProServer_textfield not editable",
            "hideCreds_button shown", "useUsername_button state 0", "username_label = Client ID:",
            "password_label = Client Secret:", "updateServerInfo_Button disabled",
            "zarnProServer_textfield disabled", "zarnProUsername_textfield disabled",
            "zarnProPassword_textfield disabled", "quit_Button titled Quit",
            "updateServerInfo_Button titled Set"}));
}

TEST_F(LeaveAddModeTest, CancelTakesTheLastProfileOfTheMapsOrderWhenNoUrlMatches)
{
    for (const auto* name : {"Zoo", "alpha", "Beta"})
        storeProfile(name, std::string("https://") + name);
    loadWithCurrent("Beta");
    cancelAdding();
    EXPECT_EQ(selectedTitle(), "alpha"); // Byte order: "Beta", "Zoo", "alpha".
    EXPECT_EQ(nameText(), "alpha");
    EXPECT_EQ(serverText(), "https://alpha");
    EXPECT_TRUE(field("zarnProServer_textfield").isEnabled());
    EXPECT_TRUE(button("updateServerInfo_Button").isEnabled());
}

TEST_F(LeaveAddModeTest, CancelTakesTheFirstProfileWhoseUrlIsTheRememberedOne)
{
    storeProfile("M", "https://newest", 5);
    storeProfile("N", "https://newest", 5);
    storeProfile("Z", "https://z", 1);
    load(); // No current profile: the newest URL is remembered.
    ASSERT_EQ(login->model().lastServer, "https://newest");
    cancelAdding();
    EXPECT_EQ(selectedTitle(), "M");
    EXPECT_EQ(serverText(), "https://newest");
}

TEST_F(LeaveAddModeTest, AProfileWithAnEmptyUrlMakesTheServerFieldEditable)
{
    storeProfile("A", "");
    loadWithCurrent("A");
    cancelAdding();
    EXPECT_TRUE(field("zarnProServer_textfield").isEditable());
    EXPECT_EQ(serverText(), "");
}

TEST_F(LeaveAddModeTest, WhatWasTypedIsDiscardedAndNothingIsSaved)
{
    storeProfile("A", "https://a");
    loadWithCurrent("A");
    choose("Add Server...");
    type("displayName_TextField", "New");
    typeServer("https://new");
    const auto settings = actions().values;
    events().clear();
    click("quit_Button");
    EXPECT_EQ(nameText(), "A");
    EXPECT_EQ(serverText(), "https://a");
    EXPECT_EQ(actions().values, settings);
    EXPECT_EQ(queue.pending(), 0U);
    EXPECT_EQ(events(), (std::vector<std::string>{"keychain copy zortcuts-apiClient-a/*"}));
}

TEST_F(LeaveAddModeTest, TheFieldsStayShownAfterCancel)
{
    storeProfile("A", "https://a");
    storeSecret("zortcuts-apiClient-a", "id", "secret");
    loadWithCurrent("A");
    EXPECT_EQ(window.view.height, 85);
    cancelAdding();
    EXPECT_EQ(window.view.height, 208);
}

TEST_F(LeaveAddModeDeathTest, CancelWithoutAnyProfileLeftStopsTheProcess)
{
    storeProfile("A", "https://a");
    loadWithCurrent("A");
    chooseWithOption("A");
    choose("Add Server...");
    EXPECT_DEATH(click("quit_Button"), "fatal: no profile to return to\n");
}

TEST_F(LeaveAddModeDeathTest, CancelAtAProfileWithoutAUrlStopsTheProcess)
{
    storeProfile("A", "https://a");
    storeProfile("B", "https://b");
    (*(*shared().values.at("serversDict").dictionary())["B"].dictionary()).erase("server");
    loadWithCurrent("A");
    choose("Add Server...");
    EXPECT_DEATH(click("quit_Button"), "fatal: a profile without a server URL\n");
}

} // namespace

} // namespace zarn
