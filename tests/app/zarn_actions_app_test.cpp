// SPDX-License-Identifier: MIT
#include "app/zarn_actions_app.h"

#include "base/base64.h"
#include "tests/app/app_fixture.h"

#include <algorithm>
#include <chrono>

namespace zarn {

namespace {

using namespace std::chrono_literals;

class WholeAppTest : public AppTest {
protected:
    void SetUp() override { agreeToTerms(); }
    memory::MemorySettingsDomain& shared()
    {
        return *platform.settings.suite("group.R3V8N1P6WB.zarnie.SharedZPMA");
    }
    memory::MemorySettingsDomain& actions()
    {
        return *platform.settings.suite("group.Q7X2M9K4TA.zarnactions");
    }
    void click(std::string_view name) { EXPECT_TRUE(mainWindow().click(name)) << name; }
    void type(std::string_view name, std::string_view text)
    {
        EXPECT_TRUE(mainWindow().type(name, text)) << name;
    }
    void addServer(const std::string& name, const std::string& url, bool withUsername)
    {
        if (!mainWindow().outlets.popUp.isHidden()) {
            EXPECT_TRUE(mainWindow().choose("Add Server..."));
        }
        type("displayName_TextField", name);
        type("zarnProServer_textfield", url);
        if (withUsername)
            click("useUsername_button");
        type("zarnProUsername_textfield", "admin");
        type("zarnProPassword_textfield", "s3cret");
        platform.urlSessions.reply(
            200, withUsername ? R"({"token":"t0k3n"})" : R"({"access_token":"t0k3n"})");
        if (app().connection().serverVersion.empty())
            platform.urlSessions.reply(200, R"({"version":"10.49.1-t1712"})");
        click("updateServerInfo_Button");
        platform.urlSessions.deliverAll();
    }
    std::string statusLine()
    {
        return mainWindow().outlets.labelNamed("status_Label").stringValue();
    }
    std::string secretOf(const std::string& service, const std::string& account) const
    {
        for (const auto& item : platform.keychain.items) {
            if (item.service == service && item.account == account)
                return {item.secret.begin(), item.secret.end()};
        }
        return "none";
    }
};

using WholeAppDeathTest = WholeAppTest;

TEST_F(WholeAppTest, AServerIsAddedEndToEnd)
{
    start();
    addServer("Head office", "https://zarn.example:8443/", true);
    ASSERT_TRUE(app().finishKeychainWrites());

    const auto& requests = platform.urlSessions.requests;
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].method + " " + requests[0].url,
        "POST https://zarn.example:8443/api/v1/auth/token");
    EXPECT_EQ(requests[1].method + " " + requests[1].url,
        "GET https://zarn.example:8443/api/v1/zarn-pro-version");
    const auto hasHeader = [](const auto& request, const char* name, const std::string& value) {
        return std::count(request.headers.begin(), request.headers.end(),
                   std::pair<std::string, std::string>(name, value))
            == 1;
    };
    EXPECT_TRUE(hasHeader(requests[0], "Authorization", "Basic " + base64Encoded("admin:s3cret")));
    EXPECT_TRUE(hasHeader(requests[1], "Authorization", "Bearer t0k3n"));
    EXPECT_TRUE(hasHeader(requests[0], "User-Agent", "zarn%2Dactions/1.4.2"));

    EXPECT_EQ(shared().values,
        (Value::Dictionary{{"serversDict",
            Value::Dictionary{{"Head office",
                Value::Dictionary{
                    {"server", "https://zarn.example:8443/"}, {"date", platform.clock.time}}}}}}));
    EXPECT_EQ(actions().values,
        (Value::Dictionary{{"currentServer", "Head office"}, {"username", "admin"},
            {"useUsername", 1}, {"saveCreds", 1}}));
    EXPECT_EQ(secretOf("ZPMA-zarn.example", "admin"), "s3cret");
    EXPECT_EQ(secretOf("ZPMA-zortcuts", "zortcuts"),
        base64Encoded(
            R"({"server":"https://zarn.example:8443", "username":"admin", "password":"s3cret", "useApiClient":"0"})"));
    ASSERT_EQ(platform.alertRunner.shown.size(), 1U);
    EXPECT_EQ(platform.alertRunner.shown[0].messageText, "");
    EXPECT_EQ(platform.alertRunner.shown[0].informativeText, "Head office was successfully set");
    EXPECT_EQ(app().connection().authScheme, "Bearer");
}

TEST_F(WholeAppTest, TheNextStartShowsWhatTheLastOneSaved)
{
    start();
    addServer("Head office", "https://zarn.example:8443/", true);
    end();
    start();
    auto& outlets = mainWindow().outlets;
    EXPECT_EQ(outlets.popUp.titleOfSelectedItem(), "Head office");
    EXPECT_EQ(
        outlets.fieldNamed("zarnProServer_textfield").stringValue(), "https://zarn.example:8443/");
    EXPECT_EQ(outlets.fieldNamed("zarnProUsername_textfield").stringValue(), "admin");
    EXPECT_EQ(outlets.fieldNamed("zarnProPassword_textfield").stringValue(), "s3cret");
    EXPECT_EQ(outlets.buttonNamed("updateServerInfo_Button").title(), "Set");
    EXPECT_EQ(app().connection().useApiClient, 0);
    EXPECT_EQ(app().connection().serverVersion, ""); // A fresh process knows no version.
}

TEST_F(WholeAppTest, BothModesOfOneHostLiveSideBySide)
{
    start();
    addServer("By user", "https://zarn.example", true);
    addServer("By client", "https://zarn.example", false);
    ASSERT_TRUE(app().finishKeychainWrites());
    EXPECT_EQ(secretOf("ZPMA-zarn.example", "admin"), "s3cret");
    EXPECT_EQ(secretOf("zortcuts-apiClient-zarn.example", "admin"), "s3cret");
    EXPECT_EQ(platform.urlSessions.requests.size(), 3U); // The version is asked for once.
}

TEST_F(WholeAppTest, QuittingRightAfterSuccessLosesNoKeychainWrite)
{
    start();
    addServer("Head office", "https://zarn.example", true);
    EXPECT_EQ(secretOf("ZPMA-zarn.example", "admin"), "none"); // Still in the queue.
    end();
    EXPECT_EQ(secretOf("ZPMA-zarn.example", "admin"), "s3cret");
    EXPECT_NE(secretOf("ZPMA-zortcuts", "zortcuts"), "none");
}

TEST_F(WholeAppTest, TheEndWaitsTenSecondsForAKeychainThatIsSilent)
{
    start();
    addServer("Head office", "https://zarn.example", true);
    auto& queue = *platform.serialQueues.made.front();
    queue.busyFor = 9950ms;
    EXPECT_TRUE(app().finishKeychainWrites());
    queue.busyFor = 1h;
    EXPECT_FALSE(app().finishKeychainWrites());
    EXPECT_EQ(queue.busyFor, 1h - 10s);
}

TEST_F(WholeAppTest, TheEndWaitsLongerOnlyWhileTheUserHasToUnlockTheKeychain)
{
    start();
    addServer("Head office", "https://zarn.example", true);
    auto& queue = *platform.serialQueues.made.front();
    platform.keychain.setWaitingForUser(true);
    queue.busyFor = 5min;
    EXPECT_TRUE(app().finishKeychainWrites());
    EXPECT_EQ(secretOf("ZPMA-zarn.example", "admin"), "s3cret");
    queue.busyFor = 1h;
    EXPECT_FALSE(app().finishKeychainWrites());
    EXPECT_EQ(queue.busyFor, 1h - 6min);
}

TEST_F(WholeAppTest, TheStatusLineSaysThatTheKeyringIsToBeUnlocked)
{
    start();
    platform.keychain.setWaitingForUser(true);
    EXPECT_EQ(statusLine(), "Waiting for the keyring to be unlocked");
    platform.keychain.setWaitingForUser(false);
    EXPECT_EQ(statusLine(), "");
}

TEST_F(WholeAppTest, TheKeychainHasNoObserverOnceTheProgramHasEnded)
{
    start();
    end();
    platform.keychain.setWaitingForUser(true);
}

TEST_F(WholeAppTest, ASecretThatWasNotStoredIsInTheStatusLineAndOnStandardOutput)
{
    start();
    platform.keychain.addStatus = keychain_status::readOnly;
    addServer("Head office", "https://zarn.example", true);
    EXPECT_TRUE(app().finishKeychainWrites());
    EXPECT_EQ(statusLine(), "") << "the failure has not reached the main thread yet";
    platform.application.runPosted();
    const std::string cause
        = "The keyring did not take the secret: The keychain cannot be changed.";
    EXPECT_EQ(statusLine(), cause);
    const std::string line = "[credentials.save] " + cause;
    EXPECT_EQ(std::count(platform.console.lines.begin(), platform.console.lines.end(), line), 2);
    EXPECT_EQ(
        platform.alertRunner.shown.back().informativeText, "Head office was successfully set");
}

TEST_F(WholeAppTest, ASettingThatWasNotStoredIsInTheStatusLineAndOnStandardOutput)
{
    start();
    platform.settings.suite("group.R3V8N1P6WB.zarnie.SharedZPMA")->failure = "The disk is full.";
    addServer("Head office", "https://zarn.example", true);
    const std::string cause = "The settings did not take the change: The disk is full.";
    EXPECT_EQ(statusLine(), cause);
    const auto& lines = platform.console.lines;
    EXPECT_GT(std::count(lines.begin(), lines.end(), "[settings.save] " + cause), 0);
    EXPECT_EQ(
        platform.alertRunner.shown.back().informativeText, "Head office was successfully set");
}

TEST_F(WholeAppTest, TheSettingsHaveNoObserverOnceTheProgramHasEnded)
{
    start();
    end();
    platform.settings.standard().failure = "The disk is full.";
    platform.settings.standard().set("key", 1);
    EXPECT_EQ(platform.settings.standard().object("key"), std::nullopt);
}

TEST_F(WholeAppTest, TheKeychainQueueIsMadeOnceOnFirstUseUnderItsName)
{
    start();
    EXPECT_TRUE(app().finishKeychainWrites());
    addServer("A", "https://a", true);
    addServer("B", "https://b", true);
    ASSERT_EQ(platform.serialQueues.made.size(), 1U);
    EXPECT_EQ(platform.serialQueues.made.front()->label(), "com.zarn.zarn-shortcuts");
}

TEST_F(WholeAppTest, AlertsOfEveryLayerComeThroughTheOnePresenter)
{
    start();
    EXPECT_EQ(std::count(events().begin(), events().end(), "activate"), 1);
    type("displayName_TextField", "A");
    type("zarnProServer_textfield", "https://a");
    platform.urlSessions.reply(200, R"({"access_token":"t"})");
    platform.urlSessions.reply(404, "");
    click("updateServerInfo_Button");
    platform.urlSessions.deliverAll();
    ASSERT_EQ(platform.alertRunner.shown.size(), 1U);
    EXPECT_EQ(platform.alertRunner.shown[0].messageText, "Attention");
    EXPECT_EQ(platform.alertRunner.shown[0].informativeText,
        "Failed to get version information from https://a");
    EXPECT_EQ(std::count(events().begin(), events().end(), "activate"), 2);
}

TEST_F(WholeAppTest, RunningHandsTheControllersToTheStoryboardAndAnswersTheLoopsCode)
{
    bool ran = false;
    platform.application.whileRunning = [&] {
        ran = true;
        EXPECT_NE(mainWindow().controller, nullptr);
    };
    EXPECT_EQ(app().run(), 0);
    EXPECT_TRUE(ran);
}

TEST_F(WholeAppTest, OnlyTheThreeCustomClassesAreKnown)
{
    for (const auto* known : {"LoginVC", "AboutVC", "ToUVC"})
        EXPECT_NE(app().makeViewController(known), nullptr) << known;
    for (const auto* unknown : {"", "loginvc", "ViewController"})
        EXPECT_EQ(app().makeViewController(unknown), nullptr) << unknown;
}

TEST_F(WholeAppTest, NothingIsOpenedOrWrittenBeforeTheLoopRuns)
{
    app();
    EXPECT_TRUE(events().empty());
    EXPECT_TRUE(platform.serialQueues.made.empty());
    EXPECT_TRUE(platform.fileManager.files.empty());
}

TEST_F(WholeAppDeathTest, WithoutTheStoryboardTheProcessStops)
{
    platform.storyboards.withoutMain = true;
    EXPECT_DEATH(app().run(), "fatal: the bundle has no storyboard \"Main\"\n");
}

} // namespace

} // namespace zarn
