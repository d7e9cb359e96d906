// SPDX-License-Identifier: MIT
#include "profiles/credential_fields.h"

#include "tests/profiles/flow_fixture.h"
#include "tests/profiles/login_fixture.h"

namespace zarn {

namespace {

/// One profile, "A" at host "a", in username mode; both modes have an entry for its host.
class CredentialFieldsTest : public LoginTest {
protected:
    void SetUp() override
    {
        storeProfile("A", "https://a:8443/");
        actions().values = {{"currentServer", "A"}, {"username", "admin"}, {"useUsername", 1}};
        storeSecret("ZPMA-a", "admin", "password");
        storeSecret("zortcuts-apiClient-a", "id", "client secret");
        load();
        events().clear();
        platform.console.lines.clear();
    }
    CredentialFields makeFields()
    {
        m_outlets.connect(window.outlets);
        return CredentialFields({m_outlets, m_model, connection, domains,
            [this] { return makeCredentials(); }, platform.console,
            [this](int width, int height) { window.view.setPreferredContentSize(width, height); }});
    }
    std::vector<bool> credentialControlsHidden()
    {
        std::vector<bool> hidden;
        for (const auto* name :
            {"zarnProServer_textfield", "zarnProUsername_textfield", "zarnProPassword_textfield"})
            hidden.push_back(field(name).isHidden());
        for (const auto* name : {"serverURL_Label", "username_label", "password_label"})
            hidden.push_back(window.outlets.labelNamed(name).isHidden());
        return hidden;
    }

private:
    LoginOutlets m_outlets;
    LoginModel m_model;
};

TEST_F(CredentialFieldsTest, EachModeHasItsRow)
{
    const struct {
        int mode;
        int height;
        const char* toolTip;
        bool hidden;
        ImageName image;
    } rows[] = {
        {0, 85, "show username/password fields", true, ImageName::RightFacingTriangleTemplate},
        {1, 208, "hide username/password fields", false, ImageName::TouchBarGoDownTemplate},
        {0, 85, "show username/password fields", true, ImageName::RightFacingTriangleTemplate},
        {2, 208, "hide username/password fields", false, ImageName::TouchBarGoDownTemplate},
    };
    auto fields = makeFields();
    for (const auto& row : rows) {
        fields.applyCredentialFieldsMode(row.mode);
        EXPECT_EQ(window.view.width, 518);
        EXPECT_EQ(window.view.height, row.height);
        EXPECT_EQ(button("hideCreds_button").toolTip(), row.toolTip);
        EXPECT_EQ(credentialControlsHidden(), std::vector<bool>(6, row.hidden));
        EXPECT_EQ(button("hideCreds_button").state(), row.mode);
        EXPECT_EQ(button("hideCreds_button").image(), row.image);
    }
}

TEST_F(CredentialFieldsTest, AnyOtherModeSetsTheDisclosureButtonOnly)
{
    auto fields = makeFields();
    fields.applyCredentialFieldsMode(0);
    for (const int mode : {3, -1}) {
        recordControls();
        fields.applyCredentialFieldsMode(mode);
        EXPECT_EQ(events(),
            (std::vector<std::string>{
                "hideCreds_button state " + std::to_string(mode), "hideCreds_button image down"}));
    }
}

TEST_F(CredentialFieldsTest, TheDisclosureButtonShowsHidesAndRemembers)
{
    recordControls();
    click("hideCreds_button");
    EXPECT_EQ(events(),
        (std::vector<std::string>{"hideCreds_button image down",
            "set group.Q7X2M9K4TA.zarnactions hideCreds", "size 518 x 208",
            "hideCreds_button tooltip hide username/password fields",
            "zarnProServer_textfield shown", "zarnProUsername_textfield shown",
            "zarnProPassword_textfield shown", "serverURL_Label shown", "username_label shown",
            "password_label shown", "hideCreds_button state 1", "hideCreds_button image down"}));
    EXPECT_EQ(actions().values.at("hideCreds"), Value(1));
    click("hideCreds_button");
    EXPECT_EQ(actions().values.at("hideCreds"), Value(0));
    EXPECT_EQ(window.view.height, 85);
    EXPECT_EQ(button("hideCreds_button").image(), ImageName::RightFacingTriangleTemplate);
}

TEST_F(CredentialFieldsTest, TheStateOfTheDisclosureButtonIsStoredAsItIs)
{
    button("hideCreds_button").setState(2);
    login->performAction("hideCreds_action", nullptr);
    EXPECT_EQ(actions().values.at("hideCreds"), Value(2));
    EXPECT_EQ(window.view.height, 208);
}

TEST_F(CredentialFieldsTest, FillingTakesTheOnlyAccountWhateverTheUsernameFieldHolds)
{
    field("zarnProUsername_textfield").type("somebody else");
    auto fields = makeFields();
    fields.fillCredentialsFromKeychain();
    EXPECT_EQ(usernameText(), "admin");
    EXPECT_EQ(passwordText(), "password");
}

TEST_F(CredentialFieldsTest, FillingFromNothingEmptiesThePasswordAndShowsTheFields)
{
    platform.keychain.items.clear();
    recordControls();
    auto fields = makeFields();
    fields.fillCredentialsFromKeychain();
    EXPECT_EQ(usernameText(), "admin");
    EXPECT_EQ(passwordText(), "");
    EXPECT_EQ(window.view.height, 208);
    EXPECT_EQ(button("hideCreds_button").state(), 1);
    EXPECT_EQ(events().at(1), "zarnProPassword_textfield = ");
    EXPECT_EQ(events().at(2), "size 518 x 208");
    EXPECT_FALSE(actions().values.contains("hideCreds")); // Shown, but not remembered as chosen.
}

TEST_F(CredentialFieldsTest, SwitchingTheModeRelabelsStoresAndRefillsInThisOrder)
{
    recordControls();
    click("useUsername_button");
    EXPECT_EQ(events(),
        (std::vector<std::string>{"username_label = Client ID:", "password_label = Client Secret:",
            "set group.Q7X2M9K4TA.zarnactions useUsername", "keychain copy zortcuts-apiClient-a/*",
            "zarnProUsername_textfield = id", "zarnProPassword_textfield = client secret"}));
    EXPECT_EQ(actions().values.at("useUsername"), Value(0));
    EXPECT_EQ(connection.useApiClient, 1);
    EXPECT_EQ(connection.useUsernameState, 0);
    click("useUsername_button");
    EXPECT_EQ(actions().values.at("useUsername"), Value(1));
    EXPECT_EQ(connection.useApiClient, 0);
    EXPECT_EQ(connection.useUsernameState, 1);
    EXPECT_EQ(usernameText(), "admin");
    EXPECT_EQ(passwordText(), "password");
    EXPECT_EQ(labelText("username_label"), "Username:");
    EXPECT_EQ(labelText("password_label"), "Password:");
}

TEST_F(CredentialFieldsTest, AMixedCheckBoxCountsAsApiClient)
{
    button("useUsername_button").allowsMixedState = true;
    button("useUsername_button").setState(-1);
    login->performAction("useUsername_action", nullptr);
    EXPECT_EQ(connection.useUsernameState, -1);
    EXPECT_EQ(actions().values.at("useUsername"), Value(0));
    EXPECT_EQ(connection.useApiClient, 1);
}

TEST_F(CredentialFieldsTest, TheModeRefillKeepsWhatItFound)
{
    click("useUsername_button");
    EXPECT_EQ(login->model().accountDict, (AccountMap{{"id", "client secret"}}));
    platform.keychain.items.clear();
    click("useUsername_button");
    EXPECT_TRUE(login->model().accountDict.empty());
    EXPECT_EQ(usernameText(), "id");
    EXPECT_EQ(passwordText(), "");
}

TEST_F(CredentialFieldsTest, LeavingTheServerFieldTakesTheAccountOfThatName)
{
    storeSecret("ZPMA-b", "admin", "other");
    field("zarnProServer_textfield").setEditable(true);
    window.outlets.fieldNamed("zarnProServer_textfield").type("https://b/");
    recordControls();
    window.leave("zarnProServer_textfield");
    EXPECT_EQ(events(),
        (std::vector<std::string>{"keychain copy ZPMA-b/*", "zarnProUsername_textfield = admin",
            "zarnProPassword_textfield = other"}));
    EXPECT_EQ(usernameText(), "admin");
    EXPECT_EQ(passwordText(), "other");
    EXPECT_EQ(login->model().accountDict, (AccountMap{{"admin", "other"}}));
    EXPECT_TRUE(platform.console.lines.empty());
}

TEST_F(CredentialFieldsTest, LeavingTheServerFieldWithoutAnEntryChangesNothing)
{
    field("zarnProServer_textfield").setEditable(true);
    field("zarnProServer_textfield").type("https://nowhere");
    field("zarnProPassword_textfield").type("typed");
    recordControls();
    window.leave("zarnProServer_textfield");
    EXPECT_EQ(events(), (std::vector<std::string>{"keychain copy ZPMA-nowhere/*"}));
    EXPECT_EQ(passwordText(), "typed");
    EXPECT_TRUE(login->model().accountDict.empty());
}

TEST_F(CredentialFieldsTest, LeavingTheUsernameFieldEmptiesThePasswordThenLooksItUp)
{
    field("zarnProPassword_textfield").type("typed");
    recordControls();
    window.leave("zarnProUsername_textfield");
    EXPECT_EQ(events(),
        (std::vector<std::string>{"keychain copy ZPMA-a/*",
            "zarnProPassword_textfield = ", "zarnProPassword_textfield = password"}));
    EXPECT_EQ(
        platform.console.lines, (std::vector<std::string>{"[controlTextDidEndEditing] server: a"}));
}

TEST_F(CredentialFieldsTest, LeavingTheUsernameFieldDoesNotKeepWhatItFound)
{
    window.leave("zarnProUsername_textfield");
    EXPECT_TRUE(login->model().accountDict.empty());
}

TEST_F(CredentialFieldsTest, FieldsAreToldApartByTheirIdentifiers)
{
    field("zarnProPassword_textfield").type("typed");
    field("zarnProUsername_textfield").interfaceIdentifier = "";
    window.leave("zarnProUsername_textfield");
    EXPECT_EQ(passwordText(), "typed");
    field("zarnProPassword_textfield").interfaceIdentifier = "username";
    window.leave("zarnProPassword_textfield");
    EXPECT_EQ(passwordText(), "password");
}

TEST_F(CredentialFieldsTest, ANotificationWithoutATextFieldIsIgnored)
{
    recordControls();
    login->controlTextDidEndEditing(nullptr);
    EXPECT_TRUE(events().empty());
    EXPECT_TRUE(platform.console.lines.empty());
}

TEST_F(CredentialFieldsTest, NothingHereWritesToTheKeychainOrTheLog)
{
    click("useUsername_button");
    click("hideCreds_button");
    click("saveCreds_button");
    for (const auto* name :
        {"zarnProServer_textfield", "zarnProUsername_textfield", "zarnProPassword_textfield"})
        window.leave(name);
    EXPECT_EQ(queue.pending(), 0U);
    EXPECT_EQ(keychainItems().size(), 2U);
    EXPECT_TRUE(logMessages().empty());
}

TEST_F(CredentialFieldsTest, OnlyTheStateOneCountsAsSavingCredentials)
{
    button("saveCreds_button").allowsMixedState = true;
    for (const int state : {1, 0, -1, 2}) {
        button("saveCreds_button").setState(state);
        login->performAction("saveCredentials_Action", nullptr);
        EXPECT_EQ(standard().values.at("saveCreds"), Value(state == 1 ? 1 : 0));
    }
    EXPECT_FALSE(actions().values.contains("saveCreds"));
}

// --- Edge cases

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
