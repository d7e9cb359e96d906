// SPDX-License-Identifier: MIT
#include "tests/contract/controls_contract.h"

namespace zarn {

using Texts = std::vector<std::string>;

void TextFieldContract::SetUp()
{
    showInitialWindow();
    username().setDelegate(this);
    password().setDelegate(this);
}

void TextFieldContract::controlTextDidEndEditing(TextField* ended)
{
    const bool isUsername = ended == &username();
    const auto name = isUsername ? "username" : ended == &password() ? "password" : "another";
    events().push_back(std::string("end ") + name);
}

// --- The text

TEST_F(TextFieldContract, WhatTheUserTypesIsItsText)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    fixture->type("jane & <b>co</b>");
    EXPECT_EQ(username().stringValue(), "jane & <b>co</b>");
    fixture->type(".");
    EXPECT_EQ(username().stringValue(), "jane & <b>co</b>.");
    EXPECT_EQ(fixture->shownText("zarnProUsername_textfield"), "jane & <b>co</b>.");
}

TEST_F(TextFieldContract, ATextFromCodeIsShownAsItIsAndEndsNoEditing)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    for (const auto* text : {"Sch\xc3\xb6n & \xe6\x97\xa5", " a ", ""}) {
        username().setStringValue(text);
        EXPECT_EQ(username().stringValue(), text);
        EXPECT_EQ(fixture->shownText("zarnProUsername_textfield"), text);
    }
    EXPECT_EQ(events(), Texts{});
}

TEST_F(TextFieldContract, OnlyTheUsersOwnChangesOfATextAreReported)
{
    Texts changes;
    username().setOnChange([&] { changes.push_back(username().stringValue()); });
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    username().setStringValue("jan");
    EXPECT_EQ(changes, Texts{});
    fixture->type("e");
    EXPECT_EQ(changes, Texts{"jane"});
    username().setOnChange({});
    fixture->type("t");
    EXPECT_EQ(changes, Texts{"jane"});
}

TEST_F(TextFieldContract, ASecureFieldHasItsTextAndDoesNotShowIt)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProPassword_textfield"));
    fixture->type("s3cret");
    EXPECT_EQ(password().stringValue(), "s3cret");
    password().setStringValue("s3cret2");
    EXPECT_EQ(password().stringValue(), "s3cret2");
    const auto shown = fixture->shownText("zarnProPassword_textfield");
    EXPECT_FALSE(shown.empty());
    EXPECT_EQ(shown.find_first_of("s3cret2"), std::string::npos) << shown;
}

TEST_F(TextFieldContract, AFieldThatIsNotEditableTakesNoTyping)
{
    username().setStringValue("jane");
    username().setEditable(false);
    EXPECT_FALSE(username().isEditable());
    EXPECT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    fixture->type("x");
    EXPECT_EQ(username().stringValue(), "jane");
    username().setEditable(true);
    EXPECT_TRUE(username().isEditable());
    fixture->type("x");
    EXPECT_EQ(username().stringValue(), "janex");
}

TEST_F(TextFieldContract, AHiddenOrDisabledFieldDoesNotGetTheKeyboard)
{
    username().setEnabled(false);
    EXPECT_FALSE(username().isEnabled());
    EXPECT_FALSE(fixture->moveFocus("zarnProUsername_textfield"));
    username().setEnabled(true);
    username().setHidden(true);
    EXPECT_FALSE(fixture->moveFocus("zarnProUsername_textfield"));
    username().setHidden(false);
    EXPECT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
}

// --- End of editing

TEST_F(TextFieldContract, LeavingForAnotherFieldEndsEditingOnce)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    fixture->type("jane");
    EXPECT_EQ(events(), Texts{});
    ASSERT_TRUE(fixture->moveFocus("zarnProPassword_textfield"));
    EXPECT_EQ(events(), Texts{"end username"});
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    EXPECT_EQ(events(), (Texts{"end username", "end password"}));
}

TEST_F(TextFieldContract, LeavingForAButtonEndsEditing)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    ASSERT_TRUE(fixture->moveFocus("quit_Button"));
    EXPECT_EQ(events(), Texts{"end username"});
}

TEST_F(TextFieldContract, AnUnchangedTextEndsEditingTheSame)
{
    username().setStringValue("jane");
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
        ASSERT_TRUE(fixture->moveFocus("quit_Button"));
    }
    EXPECT_EQ(events(), (Texts{"end username", "end username"}));
}

TEST_F(TextFieldContract, ReturnEndsEditingEachTimeAndPressesNoButton)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    fixture->type("jane");
    fixture->pressReturn();
    EXPECT_EQ(events(), Texts{"end username"});
    fixture->pressReturn();
    EXPECT_EQ(events(), (Texts{"end username", "end username"}));
    fixture->type("t");
    EXPECT_EQ(username().stringValue(), "janet"); // The keyboard is still here.
    ASSERT_TRUE(fixture->moveFocus("quit_Button"));
    EXPECT_EQ(events(), (Texts{"end username", "end username", "end username"}));
}

TEST_F(TextFieldContract, AFieldThatIsNotEditableEndsNothing)
{
    username().setStringValue("jane");
    username().setEditable(false);
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    fixture->pressReturn();
    ASSERT_TRUE(fixture->moveFocus("zarnProPassword_textfield"));
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    ASSERT_TRUE(fixture->moveFocus("quit_Button"));
    EXPECT_EQ(events(), Texts{"end password"});
    username().setEditable(true);
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    ASSERT_TRUE(fixture->moveFocus("quit_Button"));
    EXPECT_EQ(events(), (Texts{"end password", "end username"}));
}

TEST_F(TextFieldContract, AClickOnAButtonActsAndEndsNothing)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    for (const auto* name : {"updateServerInfo_Button", "quit_Button", "useUsername_button",
             "saveCreds_button", "hideCreds_button"}) {
        events().clear();
        ASSERT_TRUE(fixture->click(name));
        ASSERT_EQ(events().size(), 1U) << name;
        EXPECT_NE(events().front(), "end username") << name;
    }
    fixture->type("jane");
    EXPECT_EQ(username().stringValue(), "jane");
}

TEST_F(TextFieldContract, AChoiceFromThePopUpButtonByClicksEndsNothing)
{
    outlets().popUpButton("selectServer_Button")->addItems({"A", "B"});
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    ASSERT_TRUE(fixture->choose("B", false));
    EXPECT_EQ(events(), Texts{"selectServer_Action"});
    fixture->type("jane");
    EXPECT_EQ(username().stringValue(), "jane");
}

TEST_F(TextFieldContract, LookingIntoAMenuEndsNothing)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    fixture->type("ja");
    ASSERT_TRUE(fixture->lookIntoMenu());
    EXPECT_EQ(events(), Texts{});
    fixture->type("ne");
    EXPECT_EQ(username().stringValue(), "jane");
}

TEST_F(TextFieldContract, AnAlertEndsNothing)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    fixture->type("ja");
    fixture->alerts().whenOpen([this] { EXPECT_TRUE(fixture->alerts().press("OK")); });
    const Alert alert{"", "Something happened", AlertStyle::Warning, {{"OK", ""}}};
    EXPECT_EQ(fixture->alerts().runner().runModal(alert), alertFirstButtonReturn);
    fixture->settle();
    EXPECT_EQ(events(), Texts{});
    fixture->type("ne");
    EXPECT_EQ(username().stringValue(), "jane");
}

TEST_F(TextFieldContract, ADeactivatedWindowEndsNothing)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    fixture->type("ja");
    ASSERT_TRUE(fixture->switchToOtherProgram());
    EXPECT_EQ(events(), Texts{});
    ASSERT_TRUE(fixture->comeBack());
    EXPECT_EQ(events(), Texts{});
    fixture->type("ne");
    EXPECT_EQ(username().stringValue(), "jane");
}

TEST_F(TextFieldContract, OnlyTheDelegateOfTheMomentIsTold)
{
    username().setDelegate(nullptr);
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    fixture->pressReturn();
    ASSERT_TRUE(fixture->moveFocus("zarnProPassword_textfield"));
    EXPECT_EQ(events(), Texts{});
    username().setDelegate(this);
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    fixture->pressReturn();
    EXPECT_EQ(events(), (Texts{"end password", "end username"}));
}

// --- The keyboard focus from code

TEST_F(TextFieldContract, AFirstResponderGetsWhatIsTyped)
{
    username().makeFirstResponder();
    fixture->settle();
    fixture->type("jane");
    EXPECT_EQ(username().stringValue(), "jane");
    EXPECT_EQ(events(), Texts{});
}

TEST_F(TextFieldContract, CodeThatMovesTheFocusEndsEditingInTheFieldThatLosesIt)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProPassword_textfield"));
    fixture->type("s3cret");
    username().makeFirstResponder();
    fixture->settle();
    EXPECT_EQ(events(), Texts{"end password"});
    username().makeFirstResponder();
    fixture->settle();
    EXPECT_EQ(events(), Texts{"end password"});
}

// --- The keyboard focus of a control that is disabled or hidden for a time

TEST_F(TextFieldContract, AButtonThatIsDisabledForATimeHasTheKeyboardAgain)
{
    for (const auto* name : {"displayName_TextField", "zarnProServer_textfield"})
        field(name).setDelegate(this);
    ASSERT_TRUE(fixture->moveFocus("updateServerInfo_Button"));
    auto& add = button("updateServerInfo_Button");
    add.setEnabled(false);
    fixture->settle();
    fixture->pressSpace();
    EXPECT_EQ(events(), Texts{});
    add.setEnabled(true);
    fixture->settle();
    fixture->pressSpace();
    EXPECT_EQ(events(), Texts{"updateServerInfo_Action"});
}

TEST_F(TextFieldContract, AnAlertMeanwhileChangesNothing)
{
    ASSERT_TRUE(fixture->moveFocus("updateServerInfo_Button"));
    button("updateServerInfo_Button").setEnabled(false);
    fixture->alerts().whenOpen([this] { EXPECT_TRUE(fixture->alerts().press("OK")); });
    const Alert alert{"", "Something happened", AlertStyle::Warning, {{"OK", ""}}};
    EXPECT_EQ(fixture->alerts().runner().runModal(alert), alertFirstButtonReturn);
    button("updateServerInfo_Button").setEnabled(true);
    fixture->settle();
    fixture->pressSpace();
    EXPECT_EQ(events(), Texts{"updateServerInfo_Action"});
}

TEST_F(TextFieldContract, AFieldThatIsDisabledForATimeHasTheKeyboardAgainAndEndsNothing)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    fixture->type("ja");
    username().setEnabled(false);
    fixture->settle();
    username().setEnabled(true);
    fixture->settle();
    fixture->type("ne");
    EXPECT_EQ(username().stringValue(), "jane");
    EXPECT_EQ(events(), Texts{});
}

TEST_F(TextFieldContract, AFieldThatIsHiddenForATimeHasTheKeyboardAgainAndEndsNothing)
{
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    fixture->type("ja");
    username().setHidden(true);
    fixture->settle();
    username().setHidden(false);
    fixture->settle();
    fixture->type("ne");
    EXPECT_EQ(username().stringValue(), "jane");
    EXPECT_EQ(events(), Texts{});
}

TEST_F(TextFieldContract, AUserWhoHasMovedOnKeepsTheKeyboard)
{
    ASSERT_TRUE(fixture->moveFocus("updateServerInfo_Button"));
    button("updateServerInfo_Button").setEnabled(false);
    ASSERT_TRUE(fixture->moveFocus("zarnProUsername_textfield"));
    button("updateServerInfo_Button").setEnabled(true);
    fixture->settle();
    fixture->type("jane");
    EXPECT_EQ(username().stringValue(), "jane");
    EXPECT_EQ(events(), Texts{});
    button("updateServerInfo_Button").setEnabled(false);
    button("updateServerInfo_Button").setEnabled(true);
    fixture->settle();
    fixture->type("t");
    EXPECT_EQ(username().stringValue(), "janet");
}

TEST_F(TextFieldContract, AHiddenFieldThatIsMadeFirstResponderHasTheFocusOnceItIsShown)
{
    auto& name = field("displayName_TextField");
    ASSERT_TRUE(name.isHidden());
    name.makeFirstResponder();
    name.setHidden(false);
    fixture->settle();
    fixture->type("Head office");
    EXPECT_EQ(name.stringValue(), "Head office");
}

} // namespace zarn
