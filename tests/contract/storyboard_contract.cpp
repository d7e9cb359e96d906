// SPDX-License-Identifier: MIT
#include "tests/contract/storyboard_contract.h"

#include <algorithm>

namespace zarn {

using Texts = std::vector<std::string>;

void StoryboardContract::showAbout()
{
    storyboard().showWindow(instantiateAbout());
    fixture->settle();
}

void StoryboardContract::showTerms()
{
    showInitialWindow();
    probe("LoginVC").shownView().performSegue("termsOfUse");
    fixture->settle();
    events().clear();
}

// --- Controllers by name

TEST_F(StoryboardContract, OnlyTheStoryboardMainIsThere)
{
    EXPECT_NE(fixture->storyboards().storyboard("Main"), nullptr);
    EXPECT_EQ(fixture->storyboards().storyboard("Main"), fixture->storyboards().storyboard("Main"));
    for (const auto* unknown : {"", "main", "Main ", "About"})
        EXPECT_EQ(fixture->storyboards().storyboard(unknown), nullptr) << unknown;
}

TEST_F(StoryboardContract, TheInitialControllerIsThatOfTheConfigurationView)
{
    const auto initial = storyboard().instantiateInitialController();
    ASSERT_NE(initial->window(), nullptr);
    EXPECT_EQ(initial->window()->title(), "Zarn Actions");
    EXPECT_EQ(events(), (Texts{"LoginVC connectOutlets", "LoginVC viewDidLoad"}));
}

TEST_F(StoryboardContract, AControllerHasItsIdentifierAndAnUnknownOneIsNone)
{
    const auto about = instantiateAbout();
    ASSERT_NE(about, nullptr);
    EXPECT_EQ(about->window()->title(), "About");
    EXPECT_EQ(events(), (Texts{"AboutVC connectOutlets", "AboutVC viewDidLoad"}));
    for (const auto* unknown : {"", "aboutwc", "About", "LoginVC", "termsOfUse"})
        EXPECT_EQ(storyboard().instantiateController(unknown), nullptr) << unknown;
    EXPECT_EQ(events().size(), 2U);
}

TEST_F(StoryboardContract, AWindowWhoseClassNobodyMakesIsShownAllTheSame)
{
    storyboard().setViewControllerFactory([](std::string_view) { return nullptr; });
    showAbout();
    EXPECT_EQ(windowTitles(), Texts{"About"});
    EXPECT_TRUE(fixture->closeWindow("About"));
}

// --- From loading to closing

TEST_F(StoryboardContract, WhatIsLoadedIsNotOnScreenUntilItIsShown)
{
    auto initial = storyboard().instantiateInitialController();
    fixture->settle();
    EXPECT_EQ(windowTitles(), Texts{});
    EXPECT_EQ(events(), (Texts{"LoginVC connectOutlets", "LoginVC viewDidLoad"}));
    storyboard().showWindow(std::move(initial));
    fixture->settle();
    EXPECT_EQ(windowTitles(), Texts{"Zarn Actions"});
    EXPECT_TRUE(fixture->isInFront("Zarn Actions"));
    EXPECT_EQ(events(),
        (Texts{"LoginVC connectOutlets", "LoginVC viewDidLoad", "LoginVC viewWillAppear",
            "LoginVC viewDidAppear"}));
}

TEST_F(StoryboardContract, WhatIsDroppedWithoutBeingShownLeavesNothingBehind)
{
    showInitialWindow();
    instantiateAbout().reset();
    fixture->settle();
    EXPECT_EQ(events(), (Texts{"AboutVC connectOutlets", "AboutVC viewDidLoad", "AboutVC ended"}));
    EXPECT_EQ(windowTitles(), Texts{"Zarn Actions"});
}

TEST_F(StoryboardContract, AClosedWindowTakesItsControllerAlong)
{
    showInitialWindow();
    showAbout();
    events().clear();
    EXPECT_TRUE(fixture->closeWindow("About"));
    fixture->settle();
    EXPECT_EQ(events(), (Texts{"AboutVC viewWillDisappear", "AboutVC ended"}));
    EXPECT_EQ(windowTitles(), Texts{"Zarn Actions"});
}

TEST_F(StoryboardContract, EachAboutWindowHasAControllerOfItsOwn)
{
    showInitialWindow();
    showAbout();
    const auto* first = &probe("AboutVC");
    showAbout();
    EXPECT_NE(&probe("AboutVC"), first);
    EXPECT_EQ(windowTitles(), (Texts{"Zarn Actions", "About", "About"}));
    events().clear();
    EXPECT_TRUE(fixture->closeWindow("About"));
    fixture->settle();
    EXPECT_EQ(windowTitles(), (Texts{"Zarn Actions", "About"}));
    EXPECT_EQ(std::count(events().begin(), events().end(), "AboutVC ended"), 1);
}

TEST_F(StoryboardContract, AViewThatAppearsKnowsItsWindow)
{
    auto initial = storyboard().instantiateInitialController();
    const Window* seen = nullptr;
    record.onWillAppear["LoginVC"] = [&](View& view) { seen = view.window(); };
    const auto* window = initial->window();
    storyboard().showWindow(std::move(initial));
    EXPECT_EQ(seen, window);
}

// --- Segues

TEST_F(StoryboardContract, TheSeguePresentsTheTermsOverTheWindowThatStays)
{
    showInitialWindow();
    probe("LoginVC").shownView().performSegue("termsOfUse");
    fixture->settle();
    EXPECT_EQ(events(),
        (Texts{"ToUVC connectOutlets", "ToUVC viewDidLoad", "ToUVC viewWillAppear",
            "ToUVC viewDidAppear"}));
    EXPECT_EQ(windowTitles(), (Texts{"Zarn Actions", ""}));
    EXPECT_EQ(fixture->shownText("accept_Button"), "Accept");
}

TEST_F(StoryboardContract, ADismissedViewIsGoneOnceItsOwnCodeHasRun)
{
    showTerms();
    probe("ToUVC").onAction = [this](Button*) {
        probe("ToUVC").shownView().dismissViewController();
        events().emplace_back("still running");
    };
    ASSERT_TRUE(fixture->click("accept_Button"));
    fixture->settle();
    EXPECT_EQ(events(),
        (Texts{"exitOrAccept", "ToUVC viewWillDisappear", "still running", "ToUVC ended"}));
    EXPECT_EQ(windowTitles(), Texts{"Zarn Actions"});
    EXPECT_TRUE(fixture->isInFront("Zarn Actions"));
    EXPECT_TRUE(fixture->click("quit_Button"));
    EXPECT_EQ(events().back(), "quit_Action");
}

TEST_F(StoryboardContract, TheTermsCanBePresentedAgain)
{
    for (int round = 0; round < 2; ++round) {
        if (round == 0)
            showInitialWindow();
        probe("LoginVC").shownView().performSegue("termsOfUse");
        fixture->settle();
        EXPECT_EQ(windowTitles(), (Texts{"Zarn Actions", ""}));
        probe("ToUVC").shownView().dismissViewController();
        fixture->settle();
        EXPECT_EQ(windowTitles(), Texts{"Zarn Actions"});
    }
}

TEST_F(StoryboardContract, DismissingAViewThatNoSeguePresentedClosesItsWindow)
{
    showInitialWindow();
    showAbout();
    events().clear();
    probe("AboutVC").shownView().dismissViewController();
    EXPECT_EQ(events(), Texts{"AboutVC viewWillDisappear"});
    fixture->settle();
    EXPECT_EQ(events(), (Texts{"AboutVC viewWillDisappear", "AboutVC ended"}));
    EXPECT_EQ(windowTitles(), Texts{"Zarn Actions"});
}

TEST_F(StoryboardContract, ASegueThatTheStoryboardDoesNotKnowStopsTheProcess)
{
    showInitialWindow();
    EXPECT_DEATH(probe("LoginVC").shownView().performSegue("termsofuse"),
        "storyboard \"Main\" has no segue \"termsofuse\"");
}

// --- Windows

TEST_F(StoryboardContract, AWindowWithoutClosableIsClosedByItsViewAlone)
{
    record.onWillAppear["ToUVC"]
        = [](View& view) { view.window()->setStyleMask(window_style::fullSizeContentView); };
    showTerms();
    EXPECT_EQ(probe("ToUVC").shownView().window()->styleMask(), window_style::fullSizeContentView);
    EXPECT_FALSE(fixture->closeWindow(""));
    fixture->settle();
    EXPECT_EQ(windowTitles(), (Texts{"Zarn Actions", ""}));
    EXPECT_EQ(events(), Texts{});
    probe("ToUVC").shownView().dismissViewController();
    fixture->settle();
    EXPECT_EQ(windowTitles(), Texts{"Zarn Actions"});
}

TEST_F(StoryboardContract, AWindowStartsWithTitleAndAllControls)
{
    showInitialWindow();
    EXPECT_EQ(probe("LoginVC").shownView().window()->styleMask(),
        1U | window_style::closable | window_style::miniaturizable | window_style::resizable);
}

TEST_F(StoryboardContract, AHiddenTitleIsStillTheWindowsTitle)
{
    showInitialWindow();
    auto& window = *probe("LoginVC").shownView().window();
    window.setTitleVisibility(TitleVisibility::Hidden);
    EXPECT_EQ(window.title(), "Zarn Actions");
    window.setTitleVisibility(TitleVisibility::Hidden);
    window.setTitleVisibility(TitleVisibility::Visible);
    EXPECT_EQ(window.title(), "Zarn Actions");
    EXPECT_TRUE(fixture->isInFront("Zarn Actions"));
}

TEST_F(StoryboardContract, AWindowThatIsMadeKeyComesToTheFront)
{
    showInitialWindow();
    showAbout();
    EXPECT_TRUE(fixture->isInFront("About"));
    probe("LoginVC").shownView().window()->makeKeyAndOrderFront();
    EXPECT_TRUE(fixture->isInFront("Zarn Actions"));
    probe("AboutVC").shownView().window()->makeKeyAndOrderFront();
    EXPECT_TRUE(fixture->isInFront("About"));
    EXPECT_EQ(windowTitles(), (Texts{"Zarn Actions", "About"}));
}

// --- Views

TEST_F(StoryboardContract, TheContentHasThePreferredSizeOfTheMoment)
{
    showInitialWindow();
    auto& view = probe("LoginVC").shownView();
    for (const auto& size : {std::pair{640, 400}, {900, 500}, {600, 300}}) {
        view.setPreferredContentSize(size.first, size.second);
        EXPECT_EQ(fixture->contentSize(), size);
    }
}

TEST_F(StoryboardContract, AViewHasALayerWhenItWantsOne)
{
    showInitialWindow();
    auto& view = probe("LoginVC").shownView();
    EXPECT_FALSE(view.hasLayer());
    view.setWantsLayer(true);
    EXPECT_TRUE(view.hasLayer());
    view.setWantsLayer(false);
    EXPECT_FALSE(view.hasLayer());
}

TEST_F(StoryboardContract, AnOpaqueLayerIsPaintedInItsGrey)
{
    showInitialWindow();
    auto& view = probe("LoginVC").shownView();
    view.setWantsLayer(true);
    view.setLayerBackground(0.2, 1);
    EXPECT_EQ(fixture->layerGrey(), 51);
    view.setLayerBackground(0.6, 1);
    EXPECT_EQ(fixture->layerGrey(), 153);
}

// --- What stands there before any code sets it

TEST_F(StoryboardContract, TheConfigurationViewStartsInItsInitialState)
{
    showInitialWindow();
    const struct {
        const char* control;
        const char* text;
        bool isShown;
    } rows[] = {
        {"displayName_Label", "Server:", true},
        {"selectServer_Button", "", true},
        {"displayName_TextField", "", false},
        {"hideCreds_button", "", true},
        {"serverURL_Label", "Server URL:", true},
        {"zarnProServer_textfield", "", true},
        {"username_label", "Client ID:", true},
        {"zarnProUsername_textfield", "", true},
        {"password_label", "Client Secret:", true},
        {"zarnProPassword_textfield", "", true},
        {"useUsername_button", "Use username and password", true},
        {"saveCreds_button", "Save credentials", true},
        {"quit_Button", "Quit", true},
        {"updateServerInfo_Button", "Set", true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(fixture->shownText(row.control), row.text) << row.control;
        EXPECT_EQ(fixture->isShown(row.control), row.isShown) << row.control;
    }
    for (const auto* name : {"useUsername_button", "saveCreds_button", "hideCreds_button"})
        EXPECT_EQ(button(name).state(), 0) << name;
    EXPECT_FALSE(field("zarnProServer_textfield").isEditable());
    for (const auto* name :
        {"displayName_TextField", "zarnProUsername_textfield", "zarnProPassword_textfield"})
        EXPECT_TRUE(field(name).isEditable()) << name;
    for (const auto* name : {"quit_Button", "updateServerInfo_Button", "useUsername_button"})
        EXPECT_TRUE(button(name).isEnabled()) << name;
    EXPECT_TRUE(outlets().popUpButton("selectServer_Button")->itemTitles().empty());
    ASSERT_NE(outlets().progressIndicator("spinner_PI"), nullptr);
    EXPECT_FALSE(fixture->isShown("spinner_PI"));
}

TEST_F(StoryboardContract, TheTermsStartWithTheirTwoButtons)
{
    showTerms();
    EXPECT_EQ(fixture->shownText("exit_Button"), "Exit");
    EXPECT_EQ(fixture->shownText("accept_Button"), "Accept");
    EXPECT_EQ(fixture->shownText("termsOfUse_TextView"), "");
    ASSERT_TRUE(fixture->click("exit_Button"));
    ASSERT_TRUE(fixture->click("accept_Button"));
    EXPECT_EQ(events(), (Texts{"exitOrAccept", "exitOrAccept"}));
}

TEST_F(StoryboardContract, TheAboutViewStartsWithEmptyTexts)
{
    showAbout();
    for (const auto* control : {"appName_textfield", "version_textfield", "license_textfield"}) {
        EXPECT_EQ(fixture->shownText(control), "") << control;
        EXPECT_TRUE(fixture->isShown(control)) << control;
    }
    EXPECT_EQ(fixture->shownImage("about_image"), std::nullopt);
}

} // namespace zarn
