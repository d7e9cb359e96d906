// SPDX-License-Identifier: MIT
#include "tests/profiles/login_fixture.h"

namespace zarn {

namespace {

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
            "hideCreds_button shown", "selectServer_Button select B", "displayName_TextField = B",
            "zarnProServer_textfield = https://b:8443/", "keychain copy zortcuts-apiClient-b/*",
            "zarnProUsername_textfield = id", "zarnProPassword_textfield = secret",
            "quit_Button titled Quit", "updateServerInfo_Button titled Set"}));
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
            "hideCreds_button shown", "updateServerInfo_Button disabled",
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
    EXPECT_DEATH(click("quit_Button"), "no profile to return to");
}

TEST_F(LeaveAddModeDeathTest, CancelAtAProfileWithoutAUrlStopsTheProcess)
{
    storeProfile("A", "https://a");
    storeProfile("B", "https://b");
    (*(*shared().values.at("serversDict").dictionary())["B"].dictionary()).erase("server");
    loadWithCurrent("A");
    choose("Add Server...");
    EXPECT_DEATH(click("quit_Button"), "a profile without a server URL");
}

} // namespace

} // namespace zarn
