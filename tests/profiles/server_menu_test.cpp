// SPDX-License-Identifier: MIT
#include "profiles/server_menu.h"

#include "tests/profiles/flow_fixture.h"
#include "tests/profiles/login_fixture.h"

namespace zarn {

namespace {

/// Three profiles, "A" current, its credentials in the keychain.
class ServerMenuTest : public LoginTest {
protected:
    void SetUp() override
    {
        storeProfile("A", "https://a:8443/", 3);
        storeProfile("B", "https://b", 2);
        storeProfile("C", "https://c", 1);
        actions().values = {{"currentServer", "A"}, {"username", "admin"}, {"useUsername", 1}};
        storeSecret("ZPMA-a", "admin", "secret");
        storeSecret("ZPMA-b", "bob", "hidden");
        load();
        events().clear();
        platform.keychain.queries.clear();
    }
    std::vector<std::string> menuItems() { return window.outlets.popUp.shownItems(); }
};

using ServerMenuDeathTest = ServerMenuTest;

TEST_F(ServerMenuTest, TheMenuIsNamesASeparatorAndAddServer)
{
    EXPECT_EQ(menuItems(), (std::vector<std::string>{"A", "B", "C", "-", "Add Server..."}));
    EXPECT_EQ(login->model().sortedDisplayNames, (std::vector<std::string>{"A", "B", "C"}));
}

TEST_F(ServerMenuTest, ChoosingAProfileShowsItStepByStep)
{
    recordControls();
    choose("B");
    EXPECT_EQ(events(),
        (std::vector<std::string>{"displayName_Label = Server:", "selectServer_Button shown",
            "displayName_TextField hidden", "set group.Q7X2M9K4TA.zarnactions currentServer",
            "hideCreds_button shown", "displayName_TextField = B",
            "zarnProServer_textfield = https://b", "keychain copy ZPMA-b/*",
            "zarnProUsername_textfield = bob", "zarnProPassword_textfield = hidden",
            "quit_Button titled Quit", "updateServerInfo_Button titled Set"}));
    EXPECT_EQ(actions().values.at("currentServer"), Value("B"));
    EXPECT_EQ(selectedTitle(), "B");
}

TEST_F(ServerMenuTest, ChoosingAProfileWritesNothingElse)
{
    const auto stored = storedProfiles();
    const auto standardBefore = standard().values;
    choose("B");
    EXPECT_EQ(storedProfiles(), stored);
    EXPECT_EQ(standard().values, standardBefore);
    EXPECT_EQ(actions().values.at("username"), Value("admin"));
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_TRUE(logMessages().empty());
}

TEST_F(ServerMenuTest, ChoosingTheChosenProfileAgainShowsItAgain)
{
    field("zarnProPassword_textfield").type("typed");
    choose("A");
    EXPECT_EQ(passwordText(), "secret");
}

TEST_F(ServerMenuTest, AddServerEntersAddModeStepByStep)
{
    recordControls();
    choose("Add Server...");
    EXPECT_EQ(events(),
        (std::vector<std::string>{"displayName_TextField first responder",
            "displayName_Label = Display Name:", "displayName_TextField = ",
            "selectServer_Button hidden", "displayName_TextField shown", "serverURL_Label shown",
            "zarnProServer_textfield shown", "zarnProServer_textfield editable",
            "zarnProServer_textfield = ", "zarnProUsername_textfield = ",
            "zarnProPassword_textfield = ", "useUsername_button state 0",
            "username_label = Client ID:", "password_label = Client Secret:",
            "saveCreds_button state 0", "set group.Q7X2M9K4TA.zarnactions saveCreds",
            "hideCreds_button hidden", "quit_Button titled Cancel",
            "updateServerInfo_Button titled Add", "size 518 x 208",
            "hideCreds_button tooltip hide username/password fields",
            "zarnProServer_textfield shown", "zarnProUsername_textfield shown",
            "zarnProPassword_textfield shown", "serverURL_Label shown", "username_label shown",
            "password_label shown", "hideCreds_button state 2", "hideCreds_button image down"}));
}

TEST_F(ServerMenuTest, AddModeStoresNothingButItsSaveCredentialsFlag)
{
    standard().values["saveCreds"] = 1;
    const auto stored = storedProfiles();
    choose("Add Server...");
    EXPECT_EQ(actions().values,
        (Value::Dictionary{
            {"currentServer", "A"}, {"username", "admin"}, {"useUsername", 1}, {"saveCreds", 1}}));
    EXPECT_EQ(standard().values, (Value::Dictionary{{"saveCreds", 1}}));
    EXPECT_EQ(storedProfiles(), stored);
}

TEST_F(ServerMenuTest, AddModeFollowsItsCheckBoxToApiClientCredentials)
{
    EXPECT_EQ(connection.useApiClient, 0);
    choose("Add Server...");
    EXPECT_EQ(button("useUsername_button").state(), 0);
    EXPECT_EQ(connection.useUsernameState, 0);
    EXPECT_EQ(connection.useApiClient, 1);
    EXPECT_EQ(actions().values.at("useUsername"), Value(1));
}

TEST_F(ServerMenuTest, OnlyTheOptionBitAsksToRemove)
{
    platform.application.modifierFlags = ~modifierFlagOption;
    choose("B");
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_EQ(nameText(), "B");
    platform.application.modifierFlags = modifierFlagOption | 1U;
    choose("B");
    EXPECT_EQ(alerts.shown.size(), 1U);
}

TEST_F(ServerMenuTest, TheQuestionBeforeRemovingHasAnEmptyHeaderAndCancel)
{
    alerts.answers = {"Cancel"};
    chooseWithOption("B");
    EXPECT_EQ(alerts.shown,
        (std::vector<std::string>{"|Are you sure you want to remove B from the list?|Cancel"}));
}

TEST_F(ServerMenuTest, ARemovalWritesTheMapOnly)
{
    const auto keychainBefore = keychainItems();
    chooseWithOption("B");
    EXPECT_EQ(events(),
        (std::vector<std::string>{"alert |Are you sure you want to remove B from the list?|Cancel",
            "set group.R3V8N1P6WB.zarnie.SharedZPMA serversDict"}));
    EXPECT_EQ(storedProfiles(),
        (ProfileMap{
            {"A", profileRecord("https://a:8443/", 3)}, {"C", profileRecord("https://c", 1)}}));
    EXPECT_EQ(actions().values,
        (Value::Dictionary{{"currentServer", "A"}, {"username", "admin"}, {"useUsername", 1}}));
    EXPECT_EQ(keychainItems(), keychainBefore);
    EXPECT_EQ(menuItems(), (std::vector<std::string>{"A", "C", "-", "Add Server..."}));
}

TEST_F(ServerMenuTest, RemovingTheShownProfileEmptiesTheFields)
{
    recordControls();
    chooseWithOption("A");
    EXPECT_EQ(events(),
        (std::vector<std::string>{"alert |Are you sure you want to remove A from the list?|Cancel",
            "selectServer_Button remove A", "set group.R3V8N1P6WB.zarnie.SharedZPMA serversDict",
            "selectServer_Button select none",
            "zarnProServer_textfield = ", "zarnProUsername_textfield = ",
            "zarnProPassword_textfield = ", "selectServer_Button select none"}));
    EXPECT_FALSE(window.outlets.popUp.hasSelection());
    EXPECT_EQ(actions().values.at("currentServer"), Value("A"));
}

TEST_F(ServerMenuTest, RemovingAnotherProfileSelectsTheStartUpProfileAndLeavesTheFields)
{
    choose("C");
    typeCredentials("carol", "typed");
    chooseWithOption("C");
    EXPECT_EQ(selectedTitle(), "A");
    EXPECT_EQ(serverText(), "https://c");
    EXPECT_EQ(usernameText(), "carol");
    EXPECT_EQ(passwordText(), "typed");
}

TEST_F(ServerMenuTest, RemovalWritesAwayWhatStartUpCleaned)
{
    storeProfile("", "https://nameless");
    storeProfile("D", "/slash");
    load();
    chooseWithOption("B");
    EXPECT_EQ(storedProfiles().size(), 2U);
    EXPECT_TRUE(storedProfiles().contains("A"));
    EXPECT_TRUE(storedProfiles().contains("C"));
}

TEST_F(ServerMenuTest, RemovingTheLastProfileLeavesAnEmptyMap)
{
    for (const auto* name : {"A", "B", "C"})
        chooseWithOption(name);
    EXPECT_TRUE(storedProfiles().empty());
    EXPECT_EQ(menuItems(), (std::vector<std::string>{"-", "Add Server..."}));
    EXPECT_EQ(button("updateServerInfo_Button").title(), "Set");
}

TEST_F(ServerMenuTest, NamesAreComparedWithoutTheirCaseFirst)
{
    for (const auto* name : {"beta", "Alpha", "alpha"})
        storeProfile(name, "https://x");
    load();
    EXPECT_EQ(menuItems(),
        (std::vector<std::string>{"A", "alpha", "Alpha", "B", "beta", "C", "-", "Add Server..."}));
}

TEST_F(ServerMenuDeathTest, ATitleWithoutAProfileStopsTheProcess)
{
    window.outlets.popUp.addItem("ghost");
    EXPECT_DEATH(choose("ghost"), "fatal: a menu title without a stored profile\n");
}

TEST_F(ServerMenuDeathTest, AProfileWithoutATextForItsUrlStopsTheProcess)
{
    shared().values["serversDict"]
        = Value::Dictionary{{"A", Value::Dictionary{{"date", Date{1}}, {"server", 3}}}};
    load();
    EXPECT_DEATH(choose("A"), "fatal: a menu title without a stored profile\n");
}

TEST_F(ServerMenuTest, OptionChoosingATitleWithoutAProfileRemovesNothing)
{
    window.outlets.popUp.addItem("ghost");
    chooseWithOption("ghost");
    EXPECT_EQ(storedProfiles().size(), 3U);
    EXPECT_EQ(menuItems().back(), "ghost");
}

// --- Edge cases

using ServerMenuEdgeCases = FlowTest;

TEST_F(ServerMenuEdgeCases, AFirstRunShowsAddModeWithAnEmptyMenuAndAllCredentialControls)
{
    load();
    EXPECT_EQ(window.outlets.popUp.shownItems(), (std::vector<std::string>{"-", "Add Server..."}));
    expectAddMode();
    EXPECT_EQ(button("updateServerInfo_Button").title(), "Add");
    EXPECT_EQ(actions().values.at("saveCreds"), Value(1));
}

TEST_F(ServerMenuEdgeCases, WithoutADisclosureSettingTheFieldsStartHiddenUnlessThereAreNoProfiles)
{
    storeProfile("A", "https://a");
    storeSecret("zortcuts-apiClient-a", "id", "secret");
    actions().values["currentServer"] = "A";
    load();
    EXPECT_FALSE(credentialFieldsAreShown());
    EXPECT_EQ(button("hideCreds_button").state(), 0);
    EXPECT_EQ(window.view.height, 85);
    shared().values.clear();
    load();
    EXPECT_TRUE(credentialFieldsAreShown());
    EXPECT_EQ(button("hideCreds_button").state(), 2);
    EXPECT_EQ(window.view.height, 208);
}

TEST_F(ServerMenuEdgeCases, OptionChoosingAddServerEntersAddModeAndAsksNothing)
{
    storeProfile("A", "https://a");
    load();
    chooseWithOption("Add Server...");
    expectAddMode();
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_EQ(storedProfiles().size(), 1U);
}

TEST_F(ServerMenuEdgeCases, OptionChoosingAProfileAndAnsweringCancelRemovesNothing)
{
    storeProfile("A", "https://a");
    storeProfile("B", "https://b");
    actions().values["currentServer"] = "A";
    load();
    events().clear();
    alerts.answers = {"Cancel"};
    chooseWithOption("B");
    EXPECT_EQ(storedProfiles().size(), 2U);
    EXPECT_EQ(window.outlets.popUp.shownItems(),
        (std::vector<std::string>{"A", "B", "-", "Add Server..."}));
    EXPECT_EQ(login->model().sortedDisplayNames, (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(selectedTitle(), "B"); // The pop-up keeps the chosen item.
    EXPECT_TRUE(settingsWrites().empty());
}

TEST_F(ServerMenuEdgeCases, OptionChoosingAProfileAndAnsweringOkRemovesItAndKeepsItsKeychainEntries)
{
    storeProfile("A", "https://a");
    storeProfile("B", "https://b");
    storeSecret("zortcuts-apiClient-b", "id", "secret");
    load();
    chooseWithOption("B");
    EXPECT_FALSE(login->model().availableServersDict.contains("B"));
    EXPECT_FALSE(storedProfiles().contains("B"));
    EXPECT_FALSE(menuHas("B"));
    EXPECT_EQ(login->model().sortedDisplayNames, (std::vector<std::string>{"A"}));
    EXPECT_EQ(keychainItems(), (std::vector<std::string>{"zortcuts-apiClient-b/id=secret"}));
}

TEST_F(ServerMenuEdgeCases, RemovingTheProfileShownAtStartUpSelectsNoItemAndEmptiesTheFields)
{
    storeProfile("A", "https://a");
    storeProfile("B", "https://b");
    storeSecret("zortcuts-apiClient-a", "id", "secret");
    actions().values = {{"currentServer", "A"}, {"username", "id"}};
    load();
    ASSERT_EQ(serverText() + usernameText() + passwordText(), "https://aidsecret");
    chooseWithOption("A");
    EXPECT_FALSE(window.outlets.popUp.hasSelection());
    EXPECT_EQ(serverText() + usernameText() + passwordText(), "");
}

TEST_F(ServerMenuEdgeCases, RemovingAnotherProfileKeepsTheStartUpProfileSelected)
{
    storeProfile("A", "https://a");
    storeProfile("B", "https://b");
    actions().values["currentServer"] = "A";
    load();
    chooseWithOption("B");
    EXPECT_EQ(selectedTitle(), "A");
}

TEST_F(ServerMenuEdgeCases, ACurrentProfileIsSelectedAndTheKeychainsAccountReplacesTheUsername)
{
    const struct {
        const char* account;
        const char* secret;
    } rows[] = {{"admin", "equal"}, {"another", "only one"}};
    storeProfile("A", "https://a:8443");
    actions().values = {{"currentServer", "A"}, {"username", "admin"}};
    for (const auto& row : rows) {
        platform.keychain.items.clear();
        storeSecret("zortcuts-apiClient-a", row.account, row.secret);
        load();
        EXPECT_EQ(selectedTitle(), "A");
        EXPECT_EQ(serverText(), "https://a:8443");
        EXPECT_EQ(usernameText(), row.account);
        EXPECT_EQ(passwordText(), row.secret);
    }
    platform.keychain.items.clear();
    load();
    EXPECT_EQ(usernameText(), "admin");
}

TEST_F(ServerMenuEdgeCases, AKeychainWithoutTheHostEmptiesThePasswordAndShowsTheFields)
{
    storeProfile("A", "https://a");
    actions().values = {{"currentServer", "A"}, {"username", "admin"}};
    load();
    EXPECT_EQ(passwordText(), "");
    EXPECT_TRUE(credentialFieldsAreShown());
    EXPECT_EQ(button("hideCreds_button").state(), 1);
}

TEST_F(ServerMenuEdgeCases, WithoutACredentialModeSettingTheWordingIsApiClientAndTheBoxIsOff)
{
    load();
    EXPECT_EQ(labelText("username_label"), "Client ID:");
    EXPECT_EQ(labelText("password_label"), "Client Secret:");
    EXPECT_EQ(button("useUsername_button").state(), 0);
    EXPECT_EQ(connection.useApiClient, 1);
}

} // namespace

} // namespace zarn
