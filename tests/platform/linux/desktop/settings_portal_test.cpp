// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/settings_portal.h"
#include "tests/support/fake_settings_portal.h"
#include "tests/support/qt_environment.h"

#include <chrono>

namespace zarn::linux_backend {
namespace {

using namespace std::chrono_literals;
using Manner = FakeSettingsPortal::Manner;
using Clock = std::chrono::steady_clock;

const auto* const environment = testing::AddGlobalTestEnvironment(new QtEnvironment);
constexpr auto themeChanged = "AppleInterfaceThemeChangedNotification";

/// What "AppleInterfaceStyle" says, "-" when it is absent.
std::string style(const SettingsPortal& portal)
{
    const auto value = portal.object("AppleInterfaceStyle");
    return value ? *value->string() : "-";
}

/// Counts notifications; removed with the test.
struct Ear {
    explicit Ear(SettingsPortal& portal)
        : center(portal)
    {
        center.addObserver(this, themeChanged, [this] { ++heard; });
    }
    ~Ear() { center.removeObserver(this, themeChanged); }
    Ear(const Ear&) = delete;
    Ear& operator=(const Ear&) = delete;
    SettingsPortal& center;
    int heard = 0;
};

TEST(SettingsPortalTest, ADarkDesktopSaysDarkBeforeTheFirstPaint)
{
    const FakeSettingsPortal desktop(1);
    ASSERT_TRUE(desktop.isReady());
    SettingsPortal portal;
    portal.waitForFirstAnswer(10s);
    EXPECT_EQ(style(portal), "Dark");
    EXPECT_TRUE(portal.prefersDark());
}

TEST(SettingsPortalTest, ADesktopWithoutPreferenceOrWithALightOneSaysNothing)
{
    for (const unsigned scheme : {0U, 2U, 3U, 4000000000U}) {
        const FakeSettingsPortal desktop(scheme);
        SettingsPortal portal;
        portal.waitForFirstAnswer(10s);
        EXPECT_EQ(style(portal), "-") << scheme;
    }
}

TEST(SettingsPortalTest, OtherGlobalValuesAreAbsent)
{
    const FakeSettingsPortal desktop(1);
    SettingsPortal portal;
    portal.waitForFirstAnswer(10s);
    EXPECT_FALSE(portal.object("forceBasicAuth"));
    EXPECT_FALSE(portal.object(""));
}

TEST(SettingsPortalTest, AChangeIsSeenInTheValueBeforeObserversAreTold)
{
    FakeSettingsPortal desktop(0);
    SettingsPortal portal;
    portal.waitForFirstAnswer(10s);
    std::vector<std::string> seen;
    portal.setBeforeObservers([&](bool dark) { seen.emplace_back(dark ? "dark" : "light"); });
    portal.addObserver(&seen, themeChanged, [&] { seen.push_back(style(portal)); });
    desktop.setColorScheme(1);
    ASSERT_TRUE(runEventsUntil([&] { return seen.size() == 2; }));
    desktop.setColorScheme(2);
    ASSERT_TRUE(runEventsUntil([&] { return seen.size() == 4; }));
    EXPECT_EQ(seen, (std::vector<std::string>{"dark", "Dark", "light", "-"}));
}

TEST(SettingsPortalTest, AChangeFromNoPreferenceToLightIsNoChange)
{
    FakeSettingsPortal desktop(0);
    SettingsPortal portal;
    portal.waitForFirstAnswer(10s);
    const Ear ear(portal);
    desktop.setColorScheme(2);
    desktop.setColorScheme(1); // Signals arrive in order: this one tells that the first has come.
    ASSERT_TRUE(runEventsUntil([&] { return portal.prefersDark(); }));
    EXPECT_EQ(ear.heard, 1);
}

TEST(SettingsPortalTest, OtherSettingsOfTheDesktopAreIgnored)
{
    FakeSettingsPortal desktop(0);
    SettingsPortal portal;
    portal.waitForFirstAnswer(10s);
    const Ear ear(portal);
    desktop.emitChange("org.freedesktop.appearance", "contrast", 1U);
    desktop.emitChange("org.gnome.desktop.interface", "color-scheme", 1U);
    desktop.emitChange("org.freedesktop.appearance", "color-scheme", QString("nonsense"));
    desktop.setColorScheme(1);
    ASSERT_TRUE(runEventsUntil([&] { return portal.prefersDark(); }));
    EXPECT_EQ(ear.heard, 1);
}

TEST(SettingsPortalTest, WithoutAPortalTheFirstPaintDoesNotWait)
{
    SettingsPortal portal;
    const auto started = Clock::now();
    portal.waitForFirstAnswer(10s);
    EXPECT_LT(Clock::now() - started, 1s);
    EXPECT_EQ(style(portal), "-");
}

TEST(SettingsPortalTest, APortalThatKeepsSilentCostsNoMoreThanTheLimit)
{
    FakeSettingsPortal desktop(1, Manner::KeepsSilent);
    SettingsPortal portal;
    const auto started = Clock::now();
    portal.waitForFirstAnswer(50ms);
    EXPECT_GE(Clock::now() - started, 40ms);
    EXPECT_LT(Clock::now() - started, 2s);
    EXPECT_EQ(style(portal), "-");
    // Its answer still counts when it comes at last.
    const Ear ear(portal);
    ASSERT_TRUE(runEventsUntil([&] { return desktop.reads() > 0; }));
    desktop.answerAtLast();
    ASSERT_TRUE(runEventsUntil([&] { return portal.prefersDark(); }));
    EXPECT_EQ(ear.heard, 1);
}

TEST(SettingsPortalTest, APortalThatRefusesIsLightUntilItSignalsAChange)
{
    FakeSettingsPortal desktop(1, Manner::Refuses);
    SettingsPortal portal;
    portal.waitForFirstAnswer(10s);
    EXPECT_EQ(style(portal), "-");
    desktop.setColorScheme(1);
    EXPECT_TRUE(runEventsUntil([&] { return portal.prefersDark(); }));
}

TEST(SettingsPortalTest, APortalThatComesLaterIsHeard)
{
    SettingsPortal portal;
    portal.waitForFirstAnswer(10s);
    FakeSettingsPortal desktop(0);
    desktop.setColorScheme(1);
    EXPECT_TRUE(runEventsUntil([&] { return portal.prefersDark(); }));
}

TEST(SettingsPortalTest, ItMayEndWhileAnAnswerIsPending)
{
    FakeSettingsPortal desktop(1, Manner::KeepsSilent);
    {
        SettingsPortal portal;
        ASSERT_TRUE(runEventsUntil([&] { return desktop.reads() > 0; }));
    }
    desktop.answerAtLast();
    SettingsPortal second;
    EXPECT_TRUE(runEventsUntil([&] { return desktop.reads() > 1; }));
}

} // namespace
} // namespace zarn::linux_backend
