// SPDX-License-Identifier: MIT
#include "tests/profiles/flow_fixture.h"

namespace zarn {

namespace {

/// A profile whose host has credentials of both kinds, in each of the two modes.
class CredentialModeTest : public FlowTest, public testing::WithParamInterface<bool> {
protected:
    bool storesUsername() const { return GetParam(); }
    void SetUp() override
    {
        standard().values["agreedToTermsOfUse"] = true;
        storeProfile("Head office", "https://head.example");
        storeSecret("ZPMA-head.example", "jane", "janes password");
        storeSecret("zortcuts-apiClient-head.example", "client", "clients secret");
        actions().values["currentServer"] = "Head office";
        if (storesUsername())
            actions().values["useUsername"] = 1;
        load();
        expectStoredMode();
        choose("Add Server...");
        expectMode(false);
    }
    void expectMode(bool username)
    {
        EXPECT_EQ(button("useUsername_button").state(), username ? 1 : 0);
        EXPECT_EQ(labelText("username_label"), username ? "Username:" : "Client ID:");
        EXPECT_EQ(labelText("password_label"), username ? "Password:" : "Client Secret:");
        EXPECT_EQ(connection.useUsernameState, username ? 1 : 0);
        EXPECT_EQ(connection.useApiClient, username ? 0 : 1);
    }
    /// The shown profile has its credentials of the stored kind.
    void expectStoredMode()
    {
        expectMode(storesUsername());
        EXPECT_EQ(serverText(), "https://head.example");
        EXPECT_EQ(usernameText(), storesUsername() ? "jane" : "client");
        EXPECT_EQ(passwordText(), storesUsername() ? "janes password" : "clients secret");
    }
    std::int64_t storedUseUsername() { return actions().integer("useUsername"); }
    void addInMode(bool username)
    {
        if (username)
            click("useUsername_button");
        // The click stores the mode; another program may have changed that meanwhile.
        if (storesUsername())
            actions().values["useUsername"] = 1;
        else
            actions().values.erase("useUsername");
        addServer("New", "https://new.example");
        queue.runAll();
    }
    /// Another process reads what this one left.
    void restart()
    {
        window.controller.reset();
        connection = {};
        load();
    }
};

} // namespace

TEST_P(CredentialModeTest, CancelRestoresTheStoredModeAndTheProfilesCredentials)
{
    click("quit_Button");
    expectStoredMode();
    EXPECT_EQ(storedUseUsername(), storesUsername() ? 1 : 0);
    restart();
    expectStoredMode();
}

TEST_P(CredentialModeTest, ChoosingAProfileRestoresTheStoredModeAndTheProfilesCredentials)
{
    // The menu is hidden in add mode, but assistive technology may still choose from it.
    ASSERT_TRUE(window.outlets.popUp.choose("Head office"));
    login->performAction("selectServer_Action", nullptr);
    expectStoredMode();
    restart();
    expectStoredMode();
}

TEST_P(CredentialModeTest, AFailedAddStaysInItsMode)
{
    fillInNewServer("New", "https://new.example");
    press();
    answerNothing();
    expectMode(false);
    EXPECT_EQ(storedUseUsername(), storesUsername() ? 1 : 0);
    click("quit_Button");
    expectStoredMode();
}

TEST_P(CredentialModeTest, EndingTheProgramInAddModeKeepsTheStoredMode)
{
    restart();
    expectStoredMode();
}

TEST_P(CredentialModeTest, ASuccessfulAddStoresTheModeThatWasProved)
{
    for (const bool username : {false, true}) {
        if (username) {
            choose("Add Server...");
            connection.serverVersion.clear();
        }
        events().clear();
        addInMode(username);
        expectMode(username);
        EXPECT_EQ(storedUseUsername(), username ? 1 : 0);
        const auto writes = settingsWrites();
        const auto stores = std::count(
            writes.begin(), writes.end(), "set group.Q7X2M9K4TA.zarnactions useUsername");
        // A click on the check box stores it, too.
        EXPECT_EQ(stores, (username != storesUsername() ? 1 : 0) + (username ? 1 : 0));
        restart();
        expectMode(username);
        EXPECT_EQ(usernameText(), "id");
        EXPECT_EQ(passwordText(), "secret");
    }
}

TEST_P(CredentialModeTest, AProvedUpdateOfAProfileStoresNoMode)
{
    click("quit_Button");
    events().clear();
    press();
    answerSuccess();
    for (const auto& write : settingsWrites())
        EXPECT_EQ(write.find("useUsername"), std::string::npos) << write;
    expectMode(storesUsername());
}

INSTANTIATE_TEST_SUITE_P(Modes, CredentialModeTest, testing::Bool(),
    [](const auto& mode) { return mode.param ? "username" : "apiClient"; });

} // namespace zarn
