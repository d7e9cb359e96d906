// SPDX-License-Identifier: MIT
#include "tests/app/app_fixture.h"

#include <algorithm>

namespace zarn {

namespace {

using MenuEdgeCases = AppTest;
using TermsEdgeCases = AppTest;
using AboutEdgeCases = AppTest;

long countOf(const std::vector<std::string>& events, std::string_view event)
{
    return std::count(events.begin(), events.end(), event);
}

// --- Start-up and menu commands

TEST_F(MenuEdgeCases, ChoosingAboutTwiceOpensTwoAboutWindows)
{
    agreeToTerms();
    start();
    menu("showAbout");
    menu("showAbout");
    EXPECT_EQ(countOf(events(), "show About"), 2);
    ASSERT_EQ(platform.storyboards.main.shown.size(), 3U);
    EXPECT_NE(&shownWindow(1), &shownWindow(2));
}

TEST_F(MenuEdgeCases, WithAnAboutWindowOfZarnPrintDeskAndNoneOfItsOwnAboutShowsNothing)
{
    agreeToTerms();
    start();
    platform.windowList.records = {{{"Zarn Print Desk", "About"}}};
    events().clear();
    menu("showAbout");
    EXPECT_TRUE(events().empty());
    EXPECT_EQ(platform.storyboards.main.shown.size(), 1U);
}

TEST_F(MenuEdgeCases, WithoutALogFolderShowLogFolderPresentsOneAlertWithOneOkButton)
{
    menu("showLogFolder");
    ASSERT_EQ(platform.alertRunner.shown.size(), 1U);
    const auto& alert = platform.alertRunner.shown.front();
    EXPECT_EQ(alert.messageText, "Alert");
    EXPECT_EQ(alert.informativeText, "There are currently no log files to display.");
    ASSERT_EQ(alert.buttons.size(), 1U);
    EXPECT_EQ(alert.buttons[0].title, "OK");
    EXPECT_TRUE(platform.workspace.openedFolders.empty());
}

TEST_F(MenuEdgeCases, ClosingTheMainWindowQuitsTheApplication)
{
    agreeToTerms();
    platform.application.whileRunning = [this] {
        auto& storyboard = platform.storyboards.main;
        menu("showAbout");
        storyboard.close(1);
        EXPECT_EQ(countOf(events(), "terminate"), 0);
        storyboard.close(0);
        EXPECT_EQ(countOf(events(), "terminate"), 1);
    };
    EXPECT_EQ(app().run(), 0);
    EXPECT_EQ(countOf(events(), "terminate"), 1);
}

// --- Terms-of-use gate

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
    EXPECT_EQ(countOf(events(), "segue termsOfUse"), 0);
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

// --- About panel and appearance

TEST_F(AboutEdgeCases, SwitchingToDarkWhileThePanelIsOpenTurnsItOpaqueGreyWithWhiteText)
{
    agreeToTerms();
    start();
    menu("showAbout");
    standard().globalValues["AppleInterfaceStyle"] = "Dark";
    platform.notificationCenter.post("AppleInterfaceThemeChangedNotification");
    EXPECT_EQ(shownWindow(1).view.greyLevel, 0.2);
    EXPECT_EQ(shownWindow(1).view.alpha, 1.0);
    const auto notice = shownWindow(1).outlets.textViewNamed("license_textfield").attributedText();
    ASSERT_FALSE(notice.empty());
    for (const auto& run : notice)
        EXPECT_EQ(run.color, TextColor::White);
}

TEST_F(AboutEdgeCases, WithoutAnInterfaceStyleThePanelIsLight)
{
    agreeToTerms();
    start();
    menu("showAbout");
    EXPECT_EQ(shownWindow(1).view.greyLevel, 0.2);
    EXPECT_EQ(shownWindow(1).view.alpha, 0.2);
    const auto notice = shownWindow(1).outlets.textViewNamed("license_textfield").attributedText();
    ASSERT_FALSE(notice.empty());
    for (const auto& run : notice)
        EXPECT_EQ(run.color, TextColor::Black);
}

TEST_F(AboutEdgeCases, TheFeedbackAndLicenceLinesAreClickableAndTheWarningIsItalic)
{
    agreeToTerms();
    start();
    menu("showAbout");
    std::vector<std::string> links;
    std::string italic;
    for (const auto& run :
        shownWindow(1).outlets.textViewNamed("license_textfield").attributedText()) {
        if (run.link)
            links.push_back(run.text + " -> " + *run.link);
        if (run.font.name == "HelveticaNeue-Italic")
            italic += run.text;
    }
    EXPECT_EQ(links,
        (std::vector<std::string>{
            "publisher.example/feedback -> https://publisher.example/feedback",
            "Example Licence Agreement -> https://publisher.example/agreement.pdf"}));
    EXPECT_EQ(italic,
        "\nWarning: Failure to test shortcuts thoroughly on non production devices could result "
        "in data loss.\n");
}

// --- Alerts

class AlertEdgeCases : public AppTest {
protected:
    MyAlert alert{
        {platform.alertRunner, platform.application, platform.workspace, texts.updateCheckPageUrl}};
};

TEST_F(AlertEdgeCases, AnAlertWithAnEmptySecondTitleShowsOneButtonAndAnswersOk)
{
    EXPECT_EQ(alert.display("H", "M", ""), "OK");
    EXPECT_EQ(platform.alertRunner.shown.front().buttons.size(), 1U);
}

TEST_F(AlertEdgeCases, TheSecondButtonAnswersItsTitleAndHasTheKeyVWhileReturnPressesOk)
{
    platform.alertRunner.answers = {alertSecondButtonReturn};
    EXPECT_EQ(alert.display("H", "M", "Quit"), "Quit");
    const auto& buttons = platform.alertRunner.shown.front().buttons;
    ASSERT_EQ(buttons.size(), 2U);
    EXPECT_EQ(buttons[0].title, "OK");
    EXPECT_EQ(buttons[0].keyEquivalent, "\r");
    EXPECT_EQ(buttons[1].title, "Quit");
    EXPECT_EQ(buttons[1].keyEquivalent, "v");
}

TEST_F(AlertEdgeCases, AnAvailableUpdateIsShownWithViewFirstAndIgnoreSecond)
{
    alert.showUpdateResult(true, "1.4.2");
    const auto& shown = platform.alertRunner.shown.front();
    EXPECT_EQ(shown.informativeText, "A new versions is available.");
    ASSERT_EQ(shown.buttons.size(), 2U);
    EXPECT_EQ(shown.buttons[0].title, "View");
    EXPECT_EQ(shown.buttons[1].title, "Ignore");
}

} // namespace

} // namespace zarn
