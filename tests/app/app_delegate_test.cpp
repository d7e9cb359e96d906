// SPDX-License-Identifier: MIT
#include "app/app_delegate.h"

#include "tests/app/app_fixture.h"

#include <algorithm>

namespace zarn {

namespace {

class AppDelegateTest : public AppTest {
protected:
    void SetUp() override
    {
        platform.storyboards.main.setViewControllerFactory(
            [this](std::string_view customClass) { return app().makeViewController(customClass); });
    }
    void publish(const std::string& version)
    {
        platform.urlSessions.reply(
            200, "<tr><td>Current Version</td><td>" + version + "</td></tr>");
        menu("checkForUpdates");
        platform.urlSessions.deliverAll();
    }
    std::size_t aboutWindows() const { return platform.storyboards.main.shown.size(); }
};

using AppDelegateDeathTest = AppDelegateTest;

TEST_F(AppDelegateTest, TheLastWindowEndsTheApplicationAndStateIsRestoredSecurely)
{
    EXPECT_TRUE(app().delegate().applicationShouldTerminateAfterLastWindowClosed());
    EXPECT_TRUE(app().delegate().applicationSupportsSecureRestorableState());
    app().delegate().applicationDidFinishLaunching();
    app().delegate().applicationWillTerminate();
    EXPECT_TRUE(events().empty());
}

TEST_F(AppDelegateTest, OnlyTheThreeCommandsAreKnown)
{
    for (const auto* unknown : {"", "showabout", "checkForUpdates:", "quit"})
        EXPECT_FALSE(app().delegate().performMenuAction(unknown)) << unknown;
    EXPECT_TRUE(events().empty());
}

TEST_F(AppDelegateTest, ANewerPublishedVersionIsOffered)
{
    platform.alertRunner.answers = {alertSecondButtonReturn};
    publish("1.10.0");
    ASSERT_EQ(platform.alertRunner.shown.size(), 1U);
    EXPECT_EQ(platform.alertRunner.shown[0].messageText, "Running Zarn Actions: 1.4.2");
    EXPECT_EQ(platform.alertRunner.shown[0].informativeText, "A new versions is available.");
    EXPECT_EQ(platform.urlSessions.requests[0].url, "https://publisher.example/releases");
}

TEST_F(AppDelegateTest, AnEqualPublishedVersionIsNoUpdate)
{
    publish("1.4.2");
    ASSERT_EQ(platform.alertRunner.shown.size(), 1U);
    EXPECT_EQ(platform.alertRunner.shown[0].informativeText, "No updates are currently available.");
}

TEST_F(AppDelegateTest, NothingIsShownBeforeTheReplyAndNothingWithoutOne)
{
    menu("checkForUpdates");
    EXPECT_TRUE(platform.alertRunner.shown.empty());
    platform.urlSessions.replyNothing();
    platform.urlSessions.deliverAll();
    EXPECT_TRUE(platform.alertRunner.shown.empty());
}

TEST_F(AppDelegateTest, AboutShowsANewWindowThatStaysWhenTheApplicationIsInTheBackground)
{
    menu("showAbout");
    EXPECT_EQ(events(), (std::vector<std::string>{"show About"}));
    EXPECT_FALSE(shownWindow(0).ownWindow.hidesOnDeactivate);
}

TEST_F(AppDelegateTest, AControllerWithoutAWindowIsShownAllTheSame)
{
    platform.storyboards.main.withoutWindows = true;
    menu("showAbout");
    EXPECT_EQ(events(), (std::vector<std::string>{"show About"}));
    EXPECT_TRUE(shownWindow(0).ownWindow.hidesOnDeactivate);
}

TEST_F(AppDelegateTest, AWindowCountsOnlyWithTheExactOwnerAndTitle)
{
    using Record = WindowRecord;
    const struct {
        Record record;
        bool counts;
    } rows[] = {
        {{"Zarn Print Desk", "About"}, true},
        {{"Zarn Print Desk", "about"}, false},
        {{"Zarn Print Desk", "About "}, false},
        {{"Zarn Print Desk", std::nullopt}, false},
        {{std::nullopt, "About"}, false},
        {{std::nullopt, std::nullopt}, false},
        {{"Zarn Actions", "About"}, false},
        {{"zarn-actions", "About"}, false},
        {{"", ""}, false},
    };
    for (const auto& row : rows) {
        platform.windowList.records = {row.record};
        const auto before = aboutWindows();
        menu("showAbout");
        EXPECT_EQ(aboutWindows(), row.counts ? before : before + 1)
            << row.record.ownerName.value_or("none") << "/"
            << row.record.windowName.value_or("none");
    }
    platform.windowList.records = {{{"Other", "About"}, {"Zarn Print Desk", "About"}}};
    const auto before = aboutWindows();
    menu("showAbout");
    EXPECT_EQ(aboutWindows(), before);
}

TEST_F(AppDelegateTest, WithSuchAWindowTheFirstOwnAboutWindowIsRaisedAndNoOther)
{
    memory::MemoryWindow other("Zarn Actions", events());
    memory::MemoryWindow firstAbout("About", events());
    memory::MemoryWindow secondAbout("About", events());
    platform.application.openWindows = std::vector<Window*>{&other, &firstAbout, &secondAbout};
    platform.windowList.records = {{{"Zarn Print Desk", "About"}}};
    menu("showAbout");
    EXPECT_EQ(events(), (std::vector<std::string>{"front About"}));
    EXPECT_EQ(aboutWindows(), 0U);
    // A controller is made before the question is asked, and dropped unseen.
    EXPECT_EQ(platform.storyboards.main.instantiated, 1);
}

TEST_F(AppDelegateTest, TheLogFolderIsOpenedEvenWhenItIsEmpty)
{
    platform.fileManager.folders = {"/home/test/Library/Logs/"};
    menu("showLogFolder");
    EXPECT_EQ(
        platform.workspace.openedFolders, (std::vector<std::string>{"/home/test/Library/Logs/"}));
    EXPECT_TRUE(platform.alertRunner.shown.empty());
}

TEST_F(AppDelegateDeathTest, AMissingVersionStopsTheProcess)
{
    constexpr auto noVersion
        = "fatal: the information dictionary has no CFBundleShortVersionString\n";
    platform.bundle.info->erase("CFBundleShortVersionString");
    EXPECT_DEATH(menu("checkForUpdates"), noVersion);
    platform.bundle.info = Value::Dictionary{{"CFBundleShortVersionString", 14}};
    EXPECT_DEATH(menu("checkForUpdates"), noVersion);
    platform.bundle.info.reset();
    EXPECT_DEATH(menu("checkForUpdates"), noVersion);
}

TEST_F(AppDelegateDeathTest, AMissingStoryboardOrControllerStopsTheProcess)
{
    constexpr auto noPanel = "fatal: storyboard \"Main\" has no window controller \"aboutWC\"\n";
    platform.storyboards.main.unknownIdentifiers = {"aboutWC"};
    EXPECT_DEATH(menu("showAbout"), noPanel);
    platform.storyboards.withoutMain = true;
    EXPECT_DEATH(menu("showAbout"), noPanel);
}

TEST_F(AppDelegateDeathTest, AMissingWindowListStopsTheProcess)
{
    platform.windowList.records.reset();
    EXPECT_DEATH(menu("showAbout"), "fatal: the window server has no list of windows\n");
}

// --- Edge cases

using MenuEdgeCases = AppTest;

long countOf(const std::vector<std::string>& events, std::string_view event)
{
    return std::count(events.begin(), events.end(), event);
}

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

} // namespace

} // namespace zarn
