// SPDX-License-Identifier: MIT
#include "tests/profiles/flow_fixture.h"

namespace zarn {

namespace {

/// A profile at host "a" in username mode, its fields shown.
class CredentialEntryEdgeCases : public FlowTest {
protected:
    void loadShownProfile()
    {
        storeProfile("A", "https://a:8443", 5);
        actions().values
            = {{"currentServer", "A"}, {"username", "admin"}, {"useUsername", 1}, {"hideCreds", 1}};
        load();
        events().clear();
    }
};

TEST_F(CredentialEntryEdgeCases,
    SwitchingToApiClientForAHostWithAUsernameEntryOnlyKeepsTheUsernameAndEmptiesThePassword)
{
    storeSecret("ZPMA-a", "admin", "password");
    loadShownProfile();
    ASSERT_EQ(passwordText(), "password");
    click("useUsername_button");
    EXPECT_EQ(usernameText(), "admin");
    EXPECT_EQ(passwordText(), "");
}

TEST_F(CredentialEntryEdgeCases, SwitchingModesForAHostWithAnEntryInTheNewModeFillsBothFields)
{
    storeSecret("ZPMA-a", "admin", "password");
    storeSecret("zortcuts-apiClient-a", "id", "client secret");
    loadShownProfile();
    click("useUsername_button");
    EXPECT_EQ(usernameText(), "id");
    EXPECT_EQ(passwordText(), "client secret");
    click("useUsername_button");
    EXPECT_EQ(usernameText(), "admin");
    EXPECT_EQ(passwordText(), "password");
}

TEST_F(CredentialEntryEdgeCases, LeavingTheUsernameFieldWithANameWithoutAnEntryEmptiesThePassword)
{
    storeSecret("ZPMA-a", "admin", "password");
    loadShownProfile();
    type("zarnProUsername_textfield", "somebody");
    window.leave("zarnProUsername_textfield");
    EXPECT_EQ(usernameText(), "somebody");
    EXPECT_EQ(passwordText(), "");
}

TEST_F(CredentialEntryEdgeCases, LeavingTheServerFieldWhoseSingleAccountDiffersChangesNothing)
{
    storeSecret("ZPMA-a", "admin", "password");
    loadShownProfile();
    typeCredentials("somebody", "typed");
    window.leave("zarnProServer_textfield");
    EXPECT_EQ(usernameText(), "somebody");
    EXPECT_EQ(passwordText(), "typed");
}

TEST_F(CredentialEntryEdgeCases, LeavingThePasswordFieldDoesNothing)
{
    storeSecret("ZPMA-a", "admin", "password");
    loadShownProfile();
    typeCredentials("somebody", "typed");
    recordControls();
    window.leave("zarnProPassword_textfield");
    EXPECT_TRUE(events().empty());
    EXPECT_EQ(passwordText(), "typed");
}

TEST_F(CredentialEntryEdgeCases, CancelOnAFreshInstallationDisablesTheFieldsAndTheSetButton)
{
    load();
    click("quit_Button");
    EXPECT_EQ(labelText("displayName_Label"), "Server:");
    EXPECT_FALSE(window.outlets.popUp.isHidden());
    EXPECT_TRUE(field("displayName_TextField").isHidden());
    EXPECT_EQ(button("updateServerInfo_Button").title(), "Set");
    EXPECT_EQ(button("quit_Button").title(), "Quit");
    EXPECT_FALSE(button("updateServerInfo_Button").isEnabled());
    for (const auto* name :
        {"zarnProServer_textfield", "zarnProUsername_textfield", "zarnProPassword_textfield"})
        EXPECT_FALSE(field(name).isEnabled()) << name;
    EXPECT_FALSE(field("zarnProServer_textfield").isEditable());
    EXPECT_TRUE(button("quit_Button").isEnabled());
}

TEST_F(CredentialEntryEdgeCases,
    CancelWithStoredProfilesShowsTheOneWhoseUrlIsRememberedElseTheLastWithItsCredentials)
{
    storeProfile("https://a", "https://a", 9);
    storeProfile("z", "https://z", 1);
    storeSecret("zortcuts-apiClient-a", "id of a", "secret of a");
    storeSecret("zortcuts-apiClient-z", "id of z", "secret of z");
    load(); // Remembers the newest one's URL.
    choose("Add Server...");
    click("quit_Button");
    expectProfileMode("https://a");
    EXPECT_EQ(serverText(), "https://a");
    EXPECT_EQ(usernameText(), "id of a");
    EXPECT_EQ(passwordText(), "secret of a");
    actions().values["currentServer"] = "https://a";
    storeProfile("https://a", "https://elsewhere", 9);
    load(); // Remembers a name that is no profile's URL.
    choose("Add Server...");
    click("quit_Button");
    expectProfileMode("z");
    EXPECT_EQ(serverText(), "https://z");
    EXPECT_EQ(usernameText(), "id of z");
    EXPECT_EQ(passwordText(), "secret of z");
}

TEST_F(CredentialEntryEdgeCases, TheSaveCredentialsBoxWritesOneOrZeroIntoTheStandardSettingsOnly)
{
    loadShownProfile();
    click("saveCreds_button");
    EXPECT_EQ(standard().values.at("saveCreds"), Value(1));
    click("saveCreds_button");
    EXPECT_EQ(standard().values.at("saveCreds"), Value(0));
    EXPECT_EQ(
        events(), (std::vector<std::string>{"set standard saveCreds", "set standard saveCreds"}));
}

} // namespace

} // namespace zarn
