// SPDX-License-Identifier: MIT
#include "app/about_vc.h"

#include "tests/app/app_fixture.h"

namespace zarn {

namespace {

class AboutTest : public AppTest {
protected:
    memory::MemoryWindowController& openAbout()
    {
        platform.storyboards.main.setViewControllerFactory(
            [this](std::string_view customClass) { return app().makeViewController(customClass); });
        menu("showAbout");
        return *platform.storyboards.main.shown.back();
    }
    void switchTo(const char* style)
    {
        standard().globalValues["AppleInterfaceStyle"] = style;
        platform.notificationCenter.post("AppleInterfaceThemeChangedNotification");
    }
};

using AboutDeathTest = AboutTest;

TEST_F(AboutTest, ThePanelShowsIconNameVersionAndNotice)
{
    auto& about = openAbout();
    EXPECT_EQ(about.outlets.imageViewNamed("about_image").image(), ImageName::AppIcon);
    EXPECT_EQ(about.outlets.labelNamed("appName_textfield").stringValue(), "Zarn Actions");
    EXPECT_EQ(about.outlets.labelNamed("version_textfield").stringValue(), "Version 1.4.2 (57)");
    EXPECT_EQ(about.outlets.textViewNamed("license_textfield").attributedText(),
        Appearance(standard(), texts).noticeText());
}

TEST_F(AboutTest, ItsWindowIsTransparentAndKeepsItsPlace)
{
    auto& about = openAbout();
    EXPECT_TRUE(about.ownWindow.titlebarTransparent);
    EXPECT_FALSE(about.ownWindow.opaque);
    EXPECT_FALSE(about.ownWindow.hidesOnDeactivate);
    EXPECT_TRUE(about.view.hasLayer());
}

TEST_F(AboutTest, WithoutAWindowThereIsNothingToMakeTransparent)
{
    memory::MemoryWindowController about("About", events());
    about.view.shownIn = nullptr;
    about.controller = app().makeViewController("AboutVC");
    about.controller->setView(&about.view);
    about.controller->connectOutlets(about.outlets);
    about.controller->viewDidLoad();
    EXPECT_TRUE(about.ownWindow.opaque);
    EXPECT_EQ(about.outlets.labelNamed("appName_textfield").stringValue(), "Zarn Actions");
}

TEST_F(AboutTest, EveryOpenPanelFollowsTheThemeOnItsOwn)
{
    auto& first = openAbout();
    auto& second = openAbout();
    EXPECT_EQ(platform.notificationCenter.observerCount(), 2U);
    switchTo("Dark");
    EXPECT_EQ(first.view.alpha, 1.0);
    EXPECT_EQ(second.view.alpha, 1.0);
    platform.storyboards.main.close(0);
    EXPECT_EQ(platform.notificationCenter.observerCount(), 1U);
    switchTo("Light");
    EXPECT_EQ(platform.storyboards.main.shown.front()->view.alpha, 0.2);
}

TEST_F(AboutTest, AnotherNotificationChangesNothing)
{
    auto& about = openAbout();
    standard().globalValues["AppleInterfaceStyle"] = "Dark";
    platform.notificationCenter.post("SomethingElse");
    EXPECT_EQ(about.view.alpha, 0.2);
}

TEST_F(AboutTest, ADisappearedPanelNoLongerObserves)
{
    openAbout();
    platform.storyboards.main.close(0);
    EXPECT_EQ(platform.notificationCenter.observerCount(), 0U);
    EXPECT_EQ(
        platform.notificationCenter.removals.front(), "AppleInterfaceThemeChangedNotification");
    switchTo("Dark"); // Nobody is left to hear it.
}

TEST_F(AboutTest, AHiddenPanelThatIsStillThereNoLongerFollowsTheTheme)
{
    auto& about = openAbout();
    about.controller->viewWillDisappear();
    EXPECT_EQ(platform.notificationCenter.observerCount(), 0U);
    switchTo("Dark");
    EXPECT_EQ(about.view.alpha, 0.2);
}

TEST_F(AboutTest, LoadingPaintsThenFillsInIconNameVersionAndNotice)
{
    memory::MemoryWindowController about("About", events());
    about.controller = app().makeViewController("AboutVC");
    about.controller->setView(&about.view);
    about.controller->connectOutlets(about.outlets);
    about.outlets.recordInto(&events());
    events().clear();
    about.controller->viewDidLoad();
    EXPECT_EQ(events(),
        (std::vector<std::string>{"license_textfield filled", "about_image image",
            "appName_textfield = Zarn Actions", "version_textfield = Version 1.4.2 (57)",
            "license_textfield filled"}));
}

TEST_F(AboutTest, APanelThatWasNeverShownLeavesNoObserverBehind)
{
    platform.windowList.records = {{{"Zarn Print Desk", "About"}}};
    platform.storyboards.main.setViewControllerFactory(
        [this](std::string_view customClass) { return app().makeViewController(customClass); });
    menu("showAbout");
    EXPECT_EQ(platform.storyboards.main.instantiated, 1);
    EXPECT_EQ(platform.notificationCenter.observerCount(), 0U);
    switchTo("Dark");
}

TEST_F(AboutTest, ATextViewWithoutStorageIsLeftAlone)
{
    memory::MemoryWindowController about("About", events());
    about.outlets.textViewNamed("license_textfield").withTextStorage = false;
    about.controller = app().makeViewController("AboutVC");
    about.controller->setView(&about.view);
    about.controller->connectOutlets(about.outlets);
    about.controller->viewDidLoad();
    EXPECT_EQ(about.outlets.textViewNamed("license_textfield").timesFilled, 0);
    EXPECT_FALSE(about.controller->performAction("anything", nullptr));
}

TEST_F(AboutDeathTest, EveryMissingOutletStopsTheProcessAndIsNamed)
{
    for (const std::string name :
        {"about_image", "appName_textfield", "version_textfield", "license_textfield"}) {
        memory::MemoryWindowController about("About", events());
        about.outlets.missing = {name};
        about.controller = app().makeViewController("AboutVC");
        about.controller->setView(&about.view);
        about.controller->connectOutlets(about.outlets);
        EXPECT_DEATH(about.controller->viewDidLoad(), "fatal: missing outlet " + name + "\n");
    }
}

TEST_F(AboutDeathTest, AMissingVersionTextStopsTheProcess)
{
    const Value::Dictionary complete = *platform.bundle.info;
    for (const auto* key : {"CFBundleShortVersionString", "CFBundleVersion"}) {
        platform.bundle.info = complete;
        platform.bundle.info->erase(key);
        EXPECT_DEATH(openAbout(), key);
        (*platform.bundle.info)[key] = 7;
        EXPECT_DEATH(openAbout(), key);
    }
    platform.bundle.info.reset();
    EXPECT_DEATH(openAbout(), "information dictionary");
}

// --- Edge cases

using AboutEdgeCases = AppTest;

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

} // namespace

} // namespace zarn
