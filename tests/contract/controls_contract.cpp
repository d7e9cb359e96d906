// SPDX-License-Identifier: MIT
#include "tests/contract/controls_contract.h"

namespace zarn {

using Texts = std::vector<std::string>;

// --- Every control

TEST_F(ControlsContract, AControlIsHiddenAndShownAgain)
{
    auto& label = *outlets().label("serverURL_Label");
    ASSERT_TRUE(fixture->isShown("serverURL_Label"));
    EXPECT_FALSE(label.isHidden());
    label.setHidden(true);
    EXPECT_TRUE(label.isHidden());
    EXPECT_FALSE(fixture->isShown("serverURL_Label"));
    label.setHidden(false);
    EXPECT_FALSE(label.isHidden());
    EXPECT_TRUE(fixture->isShown("serverURL_Label"));
}

TEST_F(ControlsContract, OnlyTheTwoFieldsOfTheAddressAndTheUserHaveAnIdentifier)
{
    EXPECT_EQ(field("zarnProServer_textfield").identifier(), "server");
    EXPECT_EQ(field("zarnProUsername_textfield").identifier(), "username");
    EXPECT_EQ(field("zarnProPassword_textfield").identifier(), "");
    EXPECT_EQ(field("displayName_TextField").identifier(), "");
    EXPECT_EQ(button("quit_Button").identifier(), "");
}

// --- Labels

TEST_F(ControlsContract, ALabelShowsItsTextAsItIs)
{
    auto& label = *outlets().label("username_label");
    for (const auto* text : {"Username:", "a & b", "<b>bold</b> &amp;", "Sch\xc3\xb6n", ""}) {
        label.setStringValue(text);
        EXPECT_EQ(label.stringValue(), text);
        EXPECT_EQ(fixture->shownText("username_label"), text);
    }
}

TEST_F(ControlsContract, TheStatusLineShowsItsTextAsItIs)
{
    auto& status = *outlets().label("status_Label");
    EXPECT_EQ(status.stringValue(), "");
    for (const auto* text :
        {"a & b: &amp;", "<b>bold</b>", "Sch\xc3\xb6n", "", "Asking zarn.example for a token"}) {
        status.setStringValue(text);
        EXPECT_EQ(status.stringValue(), text);
        EXPECT_EQ(fixture->shownText("status_Label"), text);
    }
}

// --- Buttons

TEST_F(ControlsContract, AClickOnAPushButtonIsItsAction)
{
    Button* sender = nullptr;
    probe("LoginVC").onAction = [&](Button* used) { sender = used; };
    ASSERT_TRUE(fixture->click("updateServerInfo_Button"));
    EXPECT_EQ(events(), Texts{"updateServerInfo_Action"});
    EXPECT_EQ(sender, &button("updateServerInfo_Button"));
    ASSERT_TRUE(fixture->click("quit_Button"));
    EXPECT_EQ(events(), (Texts{"updateServerInfo_Action", "quit_Action"}));
}

TEST_F(ControlsContract, SpaceAndReturnPressTheButtonThatHasTheKeyboard)
{
    struct Case {
        const char* name;
        const char* action;
        int stateAfterSpace;
    };
    for (const auto& [name, action, stateAfterSpace] :
        {Case{"updateServerInfo_Button", "updateServerInfo_Action", 0},
            Case{"useUsername_button", "useUsername_action", 1},
            Case{"hideCreds_button", "hideCreds_action", 1}}) {
        events().clear();
        ASSERT_TRUE(fixture->moveFocus(name));
        fixture->pressSpace();
        EXPECT_EQ(events(), Texts{action});
        EXPECT_EQ(button(name).state(), stateAfterSpace) << name;
        fixture->pressReturn();
        EXPECT_EQ(events(), (Texts{action, action}));
        EXPECT_EQ(button(name).state(), 0) << name;
    }
}

TEST_F(ControlsContract, ADisabledOrHiddenButtonCannotBeClicked)
{
    button("updateServerInfo_Button").setEnabled(false);
    EXPECT_FALSE(button("updateServerInfo_Button").isEnabled());
    EXPECT_FALSE(fixture->click("updateServerInfo_Button"));
    button("updateServerInfo_Button").setEnabled(true);
    button("updateServerInfo_Button").setHidden(true);
    EXPECT_FALSE(fixture->click("updateServerInfo_Button"));
    EXPECT_EQ(events(), Texts{});
    button("updateServerInfo_Button").setHidden(false);
    EXPECT_TRUE(fixture->click("updateServerInfo_Button"));
    EXPECT_EQ(events(), Texts{"updateServerInfo_Action"});
}

TEST_F(ControlsContract, ATitleIsShownAsItIs)
{
    for (const auto* title : {"Add", "Save & quit", "a && b", "&", "<b>x</b>", "Sch\xc3\xb6n"}) {
        button("quit_Button").setTitle(title);
        EXPECT_EQ(button("quit_Button").title(), title);
        EXPECT_EQ(fixture->shownText("quit_Button"), title);
        button("useUsername_button").setTitle(title);
        EXPECT_EQ(button("useUsername_button").title(), title);
        EXPECT_EQ(fixture->shownText("useUsername_button"), title);
    }
}

TEST_F(ControlsContract, AClickOnACheckBoxFlipsItBeforeItsAction)
{
    std::vector<int> states;
    probe("LoginVC").onAction = [&](Button* used) { states.push_back(used->state()); };
    ASSERT_TRUE(fixture->click("useUsername_button"));
    EXPECT_EQ(button("useUsername_button").state(), 1);
    ASSERT_TRUE(fixture->click("useUsername_button"));
    EXPECT_EQ(button("useUsername_button").state(), 0);
    EXPECT_EQ(states, (std::vector<int>{1, 0}));
    EXPECT_EQ(events(), (Texts{"useUsername_action", "useUsername_action"}));
}

TEST_F(ControlsContract, ACheckBoxIsOnOrOffAndNothingElse)
{
    auto& box = button("saveCreds_button");
    for (const auto& [given, state] : {std::pair{0, 0}, {1, 1}, {2, 1}, {0, 0}, {-1, 1}}) {
        box.setState(given);
        EXPECT_EQ(box.state(), state) << given;
    }
}

TEST_F(ControlsContract, ADisclosureButtonKeepsAnyStateAndAClickFlipsIt)
{
    std::vector<int> states;
    probe("LoginVC").onAction = [&](Button* used) { states.push_back(used->state()); };
    auto& disclosure = button("hideCreds_button");
    for (const int state : {2, 1, 0, -1}) {
        disclosure.setState(state);
        EXPECT_EQ(disclosure.state(), state);
        ASSERT_TRUE(fixture->click("hideCreds_button"));
    }
    EXPECT_EQ(states, (std::vector<int>{0, 0, 1, 0}));
}

TEST_F(ControlsContract, ValuesSetFromCodeNeverFireAnAction)
{
    for (const auto* name : {"useUsername_button", "saveCreds_button", "hideCreds_button"}) {
        button(name).setState(1);
        button(name).setState(0);
        button(name).setTitle("Other");
        button(name).setEnabled(false);
    }
    outlets().popUpButton("selectServer_Button")->addItems({"A", "B"});
    outlets().popUpButton("selectServer_Button")->selectItem("B");
    outlets().popUpButton("selectServer_Button")->selectNone();
    outlets().popUpButton("selectServer_Button")->removeAllItems();
    fixture->settle();
    EXPECT_EQ(events(), Texts{});
}

TEST_F(ControlsContract, AButtonKeepsItsImageAndItsToolTip)
{
    auto& disclosure = button("hideCreds_button");
    for (const auto image :
        {ImageName::TouchBarGoDownTemplate, ImageName::RightFacingTriangleTemplate}) {
        disclosure.setImage(image);
        EXPECT_EQ(fixture->shownImage("hideCreds_button"), image);
    }
    EXPECT_EQ(fixture->toolTip("hideCreds_button"), "");
    disclosure.setToolTip("hide credentials & more");
    EXPECT_EQ(fixture->toolTip("hideCreds_button"), "hide credentials & more");
}

// --- The spinner

TEST_F(ControlsContract, TheSpinnerTurnsFromItsStartToItsStop)
{
    auto& spinner = *outlets().progressIndicator("spinner_PI");
    EXPECT_FALSE(fixture->isShown("spinner_PI"));
    spinner.startAnimation();
    spinner.startAnimation();
    EXPECT_TRUE(fixture->isShown("spinner_PI"));
    spinner.stopAnimation();
    EXPECT_FALSE(fixture->isShown("spinner_PI"));
}

TEST_F(ControlsContract, WhetherTheSpinnerTurnsIsNotWhetherItIsHidden)
{
    auto& spinner = *outlets().progressIndicator("spinner_PI");
    EXPECT_FALSE(spinner.isHidden());
    spinner.setHidden(true);
    spinner.startAnimation();
    EXPECT_TRUE(spinner.isHidden());
    EXPECT_FALSE(fixture->isShown("spinner_PI"));
    spinner.setHidden(false);
    EXPECT_TRUE(fixture->isShown("spinner_PI"));
    spinner.stopAnimation();
    EXPECT_FALSE(spinner.isHidden());
}

// --- Image and text views

OutletSource& ControlsContract::terms()
{
    probe("LoginVC").shownView().performSegue("termsOfUse");
    fixture->settle();
    return probe("ToUVC").outlets();
}

TEST_F(ControlsContract, AnImageViewHasNoImageUntilItIsGivenOne)
{
    auto& icon = *terms().imageView("icon_ImageView");
    EXPECT_EQ(fixture->shownImage("icon_ImageView"), std::nullopt);
    icon.setImage(ImageName::AppIcon);
    EXPECT_EQ(fixture->shownImage("icon_ImageView"), ImageName::AppIcon);
}

TEST_F(ControlsContract, ATextViewShowsItsRunsAsPlainTextOneAfterTheOther)
{
    auto& view = *terms().textView("termsOfUse_TextView");
    ASSERT_TRUE(view.hasTextStorage());
    view.setAttributedText({{"First <b>line</b> &amp;\n", {"", 12}, TextColor::White, {}},
        {"Sch\xc3\xb6n", {"HelveticaNeue-Italic", 12}, TextColor::White, {}}});
    EXPECT_EQ(fixture->shownText("termsOfUse_TextView"), "First <b>line</b> &amp;\nSch\xc3\xb6n");
}

TEST_F(ControlsContract, ANewTextReplacesTheOneBefore)
{
    auto& view = *terms().textView("termsOfUse_TextView");
    view.setAttributedText({{"before", {}, TextColor::Black, "https://before.example"}});
    view.setAttributedText({{"after", {}, TextColor::Black, {}}});
    EXPECT_EQ(fixture->shownText("termsOfUse_TextView"), "after");
    view.setAttributedText({});
    EXPECT_EQ(fixture->shownText("termsOfUse_TextView"), "");
}

TEST_F(ControlsContract, AClickOnALinkOpensItsAddressAndOneBesideItNothing)
{
    auto& view = *terms().textView("termsOfUse_TextView");
    view.setAttributedText({{"Please navigate to ", {}, TextColor::Black, {}},
        {"the first", {}, TextColor::Black, "https://first.example/feedback?a=1&b=2"},
        {" and then to ", {}, TextColor::Black, {}},
        {"the second", {}, TextColor::Black, "https://second.example/agreement.pdf"}});
    fixture->settle();
    EXPECT_TRUE(fixture->clickLink("termsOfUse_TextView", "the second"));
    EXPECT_TRUE(fixture->clickLink("termsOfUse_TextView", "the first"));
    EXPECT_FALSE(fixture->clickLink("termsOfUse_TextView", " and then to "));
    EXPECT_EQ(fixture->openedLinks(),
        (Texts{"https://second.example/agreement.pdf", "https://first.example/feedback?a=1&b=2"}));
    EXPECT_EQ(events(),
        (Texts{"ToUVC connectOutlets", "ToUVC viewDidLoad", "ToUVC viewWillAppear",
            "ToUVC viewDidAppear"}));
}

// --- Outlets

TEST_F(ControlsContract, AnOutletHasItsNameAndItsKindAndIsTheSameEachTime)
{
    auto& source = outlets();
    EXPECT_EQ(source.label("quit_Button"), nullptr);
    EXPECT_EQ(source.label("zarnProServer_textfield"), nullptr);
    EXPECT_EQ(source.textField("serverURL_Label"), nullptr);
    EXPECT_EQ(source.textField("selectServer_Button"), nullptr);
    EXPECT_EQ(source.button("selectServer_Button"), nullptr);
    EXPECT_EQ(source.popUpButton("quit_Button"), nullptr);
    EXPECT_EQ(source.popUpButtonCell("selectServer_Button"), nullptr);
    EXPECT_EQ(source.menu("selectServer_Button"), nullptr);
    EXPECT_EQ(source.progressIndicator("quit_Button"), nullptr);
    EXPECT_EQ(source.imageView("serverURL_Label"), nullptr);
    EXPECT_EQ(source.textView("serverURL_Label"), nullptr);
    EXPECT_EQ(terms().label("icon_ImageView"), nullptr);
    for (const auto* unknown : {"", "Quit_Button", "quit_Button ", "quitButton"})
        EXPECT_EQ(source.button(unknown), nullptr) << unknown;
    EXPECT_EQ(source.button("quit_Button"), source.button("quit_Button"));
    EXPECT_EQ(source.popUpButton("selectServer_Button"), source.popUpButton("selectServer_Button"));
}

} // namespace zarn
