// SPDX-License-Identifier: MIT
#include "app/tou_vc.h"

#include "tests/app/app_fixture.h"

#include <algorithm>

namespace zarn {

namespace {

class TermsTest : public AppTest {
protected:
    memory::MemoryWindowController& loadTerms()
    {
        memory::layOut("ToUVC", terms.outlets);
        terms.controller = app().makeViewController("ToUVC");
        terms.controller->setView(&terms.view);
        terms.controller->connectOutlets(terms.outlets);
        terms.controller->viewDidLoad();
        return terms;
    }
    memory::MemoryWindowController terms{"", platform.events};
};

using TermsDeathTest = TermsTest;

TEST_F(TermsTest, TheViewShowsIconAndNotice)
{
    loadTerms();
    EXPECT_EQ(terms.outlets.imageViewNamed("icon_ImageView").image(), ImageName::AppIcon);
    EXPECT_EQ(terms.outlets.textViewNamed("termsOfUse_TextView").attributedText(),
        Appearance(standard(), texts).noticeText());
}

TEST_F(TermsTest, AppearingTakesEveryControlOfTheWindowAwayBitByBit)
{
    loadTerms();
    terms.controller->viewWillAppear();
    EXPECT_EQ(terms.ownWindow.titleVisibility, TitleVisibility::Hidden);
    EXPECT_TRUE(terms.ownWindow.titlebarTransparent);
    // Set once, then one bit after another is cleared.
    EXPECT_EQ(terms.ownWindow.masks, std::vector<unsigned>(5, 32768));
    EXPECT_EQ(terms.ownWindow.styleMask(), 32768U);
}

TEST_F(TermsTest, AppearingPaintsTheViewInItsMode)
{
    loadTerms();
    terms.controller->viewWillAppear();
    EXPECT_TRUE(terms.view.hasLayer());
    EXPECT_EQ(terms.view.alpha, 0.2);
    standard().globalValues["AppleInterfaceStyle"] = "Dark";
    terms.controller->viewWillAppear();
    EXPECT_EQ(terms.view.alpha, 1.0);
    EXPECT_EQ(terms.outlets.textViewNamed("termsOfUse_TextView").attributedText().front().color,
        TextColor::White);
}

TEST_F(TermsTest, TheViewItselfDoesNotObserveTheTheme)
{
    Appearance appearance(standard(), texts);
    ToUVC view({appearance, standard(), platform.application});
    memory::layOut("ToUVC", terms.outlets);
    view.setView(&terms.view);
    view.connectOutlets(terms.outlets);
    view.viewDidLoad();
    view.viewWillAppear();
    EXPECT_EQ(platform.notificationCenter.observerCount(), 0U);
    standard().globalValues["AppleInterfaceStyle"] = "Dark";
    view.interfaceModeChangedWithSender();
    EXPECT_EQ(terms.view.alpha, 1.0);
}

TEST_F(TermsTest, TheProgramKeepsThemReadableWhenTheThemeChanges)
{
    loadTerms();
    terms.controller->viewWillAppear();
    EXPECT_EQ(terms.view.alpha, 0.2);
    standard().globalValues["AppleInterfaceStyle"] = "Dark";
    platform.notificationCenter.post("AppleInterfaceThemeChangedNotification");
    EXPECT_EQ(terms.view.alpha, 1.0);
    terms.controller.reset();
    EXPECT_EQ(platform.notificationCenter.observerCount(), 0U);
}

TEST_F(TermsTest, ATextViewWithoutStorageIsLeftAlone)
{
    terms.outlets.textViewNamed("termsOfUse_TextView").withTextStorage = false;
    loadTerms();
    terms.controller->viewWillAppear();
    EXPECT_EQ(terms.outlets.textViewNamed("termsOfUse_TextView").timesFilled, 0);
}

TEST_F(TermsTest, ExitStoresFalseThenEndsTheApplication)
{
    loadTerms();
    EXPECT_TRUE(terms.click("exit_Button"));
    EXPECT_EQ(events(), (std::vector<std::string>{"set standard agreedToTermsOfUse", "terminate"}));
    EXPECT_EQ(standard().values.at("agreedToTermsOfUse"), Value(false));
}

TEST_F(TermsTest, AcceptingStoresTrueThenDismissesTheView)
{
    loadTerms();
    EXPECT_TRUE(terms.click("accept_Button"));
    EXPECT_EQ(events(), (std::vector<std::string>{"set standard agreedToTermsOfUse", "dismiss"}));
    EXPECT_EQ(standard().values.at("agreedToTermsOfUse"), Value(true));
}

TEST_F(TermsTest, OnlyTheExactTitleExitDeclines)
{
    const struct {
        const char* title;
        bool agreed;
    } rows[] = {{"Exit", false}, {"exit", true}, {"Accept", true}, {"I agree", true}, {"", true},
        {"Exit ", true}};
    for (const auto& row : rows) {
        loadTerms();
        terms.outlets.buttonNamed("exit_Button").setTitle(row.title);
        EXPECT_TRUE(terms.click("exit_Button"));
        EXPECT_EQ(standard().values.at("agreedToTermsOfUse"), Value(row.agreed)) << row.title;
    }
}

TEST_F(TermsTest, AnUnknownActionIsRefused)
{
    loadTerms();
    EXPECT_FALSE(terms.controller->performAction("accept", nullptr));
    EXPECT_FALSE(
        terms.controller->performAction("accept", &terms.outlets.buttonNamed("accept_Button")));
    EXPECT_FALSE(terms.controller->performAction("exitOrAccept", nullptr));
    EXPECT_TRUE(events().empty());
}

TEST_F(TermsTest, EveryOutletIsConnected)
{
    Appearance appearance(standard(), texts);
    ToUVC view({appearance, standard(), platform.application});
    memory::MemoryOutlets asked;
    view.connectOutlets(asked);
    EXPECT_TRUE(asked.imageViews.contains("icon_ImageView"));
    EXPECT_TRUE(asked.textViews.contains("termsOfUse_TextView"));
    EXPECT_TRUE(asked.buttons.contains("exit_Button"));
    EXPECT_TRUE(asked.buttons.contains("accept_Button"));
}

TEST_F(TermsDeathTest, AMissingIconOrTextViewStopsTheProcessAndIsNamed)
{
    for (const std::string name : {"icon_ImageView", "termsOfUse_TextView"}) {
        terms.outlets.missing = {name};
        EXPECT_DEATH(loadTerms(), "fatal: missing outlet " + name + "\n");
    }
}

TEST_F(TermsDeathTest, AppearingWithoutAWindowStopsTheProcess)
{
    loadTerms();
    terms.view.shownIn = nullptr;
    EXPECT_DEATH(terms.controller->viewWillAppear(), "fatal: the terms of use have no window\n");
}

// --- Edge cases

using TermsEdgeCases = AppTest;

TEST_F(TermsEdgeCases, AFirstStartShowsTheTermsAndExitQuitsSoThatTheNextStartShowsThemAgain)
{
    for (int run = 0; run < 2; ++run) {
        start();
        ASSERT_NE(platform.storyboards.main.terms(), nullptr);
        events().clear();
        EXPECT_TRUE(platform.storyboards.main.terms()->click("exit_Button"));
        EXPECT_EQ(
            events(), (std::vector<std::string>{"set standard agreedToTermsOfUse", "terminate"}));
        EXPECT_EQ(standard().values.at("agreedToTermsOfUse"), Value(false));
        end();
    }
}

TEST_F(TermsEdgeCases, AfterAcceptingLaterStartsGoStraightToTheConfigurationView)
{
    start();
    ASSERT_NE(platform.storyboards.main.terms(), nullptr);
    EXPECT_TRUE(platform.storyboards.main.terms()->click("accept_Button"));
    EXPECT_EQ(platform.storyboards.main.terms(), nullptr);
    EXPECT_EQ(standard().values.at("agreedToTermsOfUse"), Value(true));
    end();
    events().clear();
    start();
    EXPECT_EQ(platform.storyboards.main.terms(), nullptr);
    EXPECT_EQ(std::count(events().begin(), events().end(), "segue termsOfUse"), 0);
}

TEST_F(TermsEdgeCases, TheGateWindowCannotBeClosedMinimisedResizedOrTakenToFullScreen)
{
    start();
    ASSERT_NE(platform.storyboards.main.terms(), nullptr);
    const auto mask = platform.storyboards.main.terms()->ownWindow.styleMask();
    EXPECT_EQ(mask & window_style::closable, 0U);
    EXPECT_EQ(mask & window_style::miniaturizable, 0U);
    EXPECT_EQ(mask & window_style::resizable, 0U);
    EXPECT_EQ(mask & window_style::fullScreen, 0U);
    EXPECT_EQ(mask, window_style::fullSizeContentView);
}

} // namespace

} // namespace zarn
