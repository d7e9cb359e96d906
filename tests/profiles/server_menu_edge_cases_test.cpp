// SPDX-License-Identifier: MIT
#include "tests/profiles/flow_fixture.h"

namespace zarn {

namespace {

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
