// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/desktop_preferences.h"
#include "tests/support/fake_settings_portal.h"
#include "tests/support/qt_environment.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/x11_windows.h"
#include "tests/support/x_settings_bytes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <chrono>

namespace zarn::linux_backend {
namespace {

using namespace std::chrono_literals;
using Manner = FakeSettingsPortal::Manner;
using Clock = std::chrono::steady_clock;

const auto* const environment = testing::AddGlobalTestEnvironment(new QtEnvironment);
constexpr auto themeChanged = "AppleInterfaceThemeChangedNotification";

/// What "AppleInterfaceStyle" says, "-" when it is absent.
std::string style(const DesktopPreferences& portal)
{
    const auto value = portal.object("AppleInterfaceStyle");
    return value ? *value->string() : "-";
}

/// Counts notifications; removed with the test.
struct Ear {
    explicit Ear(DesktopPreferences& portal)
        : center(portal)
    {
        center.addObserver(this, themeChanged, [this] { ++heard; });
    }
    ~Ear() { center.removeObserver(this, themeChanged); }
    Ear(const Ear&) = delete;
    Ear& operator=(const Ear&) = delete;
    DesktopPreferences& center;
    int heard = 0;
};

TEST(DesktopPreferencesTest, ADarkDesktopSaysDarkBeforeTheFirstPaint)
{
    const FakeSettingsPortal desktop(1);
    ASSERT_TRUE(desktop.isReady());
    DesktopPreferences portal;
    portal.waitForFirstReply(10s);
    EXPECT_EQ(style(portal), "Dark");
    EXPECT_TRUE(portal.prefersDark());
}

TEST(DesktopPreferencesTest, ADesktopWithoutPreferenceOrWithALightOneSaysNothing)
{
    for (const unsigned scheme : {0U, 2U, 3U, 4000000000U}) {
        const FakeSettingsPortal desktop(scheme);
        DesktopPreferences portal;
        portal.waitForFirstReply(10s);
        EXPECT_EQ(style(portal), "-") << scheme;
    }
}

TEST(DesktopPreferencesTest, OtherGlobalValuesAreAbsent)
{
    const FakeSettingsPortal desktop(1);
    DesktopPreferences portal;
    portal.waitForFirstReply(10s);
    EXPECT_FALSE(portal.object("forceBasicAuth"));
    EXPECT_FALSE(portal.object(""));
}

TEST(DesktopPreferencesTest, AChangeIsSeenInTheValueBeforeObserversAreTold)
{
    FakeSettingsPortal desktop(0);
    DesktopPreferences portal;
    portal.waitForFirstReply(10s);
    std::vector<std::string> seen;
    portal.setBeforeObservers([&] { seen.emplace_back(portal.prefersDark() ? "dark" : "light"); });
    portal.addObserver(&seen, themeChanged, [&] { seen.push_back(style(portal)); });
    desktop.setColorScheme(1);
    ASSERT_TRUE(runEventsUntil([&] { return seen.size() == 2; }));
    desktop.setColorScheme(2);
    ASSERT_TRUE(runEventsUntil([&] { return seen.size() == 4; }));
    EXPECT_EQ(seen, (std::vector<std::string>{"dark", "Dark", "light", "-"}));
}

TEST(DesktopPreferencesTest, AChangeFromNoPreferenceToLightIsNoChange)
{
    FakeSettingsPortal desktop(0);
    DesktopPreferences portal;
    portal.waitForFirstReply(10s);
    const Ear ear(portal);
    desktop.setColorScheme(2);
    desktop.setColorScheme(1); // Signals arrive in order: this one shows that the first has come.
    ASSERT_TRUE(runEventsUntil([&] { return portal.prefersDark(); }));
    EXPECT_EQ(ear.heard, 1);
}

TEST(DesktopPreferencesTest, OtherSettingsOfTheDesktopAreIgnored)
{
    FakeSettingsPortal desktop(0);
    DesktopPreferences portal;
    portal.waitForFirstReply(10s);
    const Ear ear(portal);
    desktop.emitChange("org.gnome.desktop.interface", "color-scheme", 1U);
    desktop.emitChange("org.freedesktop.appearance", "color-scheme", QString("nonsense"));
    desktop.setColorScheme(1);
    ASSERT_TRUE(runEventsUntil([&] { return portal.prefersDark(); }));
    EXPECT_EQ(ear.heard, 1);
}

TEST(DesktopPreferencesTest, ThePortalsFontTextSizeAccentAndContrastAreKnownBeforeTheFirstPaint)
{
    const FakeSettingsPortal desktop(FakeSettingsPortal::Settings{
        {"org.freedesktop.appearance",
            {{"accent-color", QVariant::fromValue(PortalColor{0, 0.5, 1})}, {"contrast", 1U}}},
        {"org.gnome.desktop.interface",
            {{"font-name", "Cantarell 14"}, {"text-scaling-factor", 1.25}}}});
    DesktopPreferences preferences;
    preferences.waitForFirstReply(10s);
    const auto& look = preferences.look();
    EXPECT_EQ(look.font, (DesktopLook::Font{"Cantarell", 14, 11}));
    EXPECT_EQ(look.textScale, 1.25);
    EXPECT_EQ(look.accent, 0x0080FFU);
    EXPECT_EQ(look.highContrast, true);
    EXPECT_EQ(desktop.reads(), 1U);
}

TEST(DesktopPreferencesTest, EachChangeOfTheLookIsReportedOnceAndIsNoChangeOfTheTheme)
{
    FakeSettingsPortal desktop(0);
    DesktopPreferences preferences;
    preferences.waitForFirstReply(10s);
    const Ear ear(preferences);
    std::vector<DesktopLook> looks;
    preferences.setBeforeObservers([&] { looks.push_back(preferences.look()); });
    desktop.change("org.gnome.desktop.interface", "font-name", "Sans 18");
    desktop.change("org.gnome.desktop.interface", "font-name", "Sans 18");
    desktop.change("org.gnome.desktop.a11y.interface", "high-contrast", true);
    desktop.change(
        "org.freedesktop.appearance", "accent-color", QVariant::fromValue(PortalColor{1, 0, 0}));
    desktop.change(
        "org.freedesktop.appearance", "accent-color", QVariant::fromValue(PortalColor{-1, -1, -1}));
    ASSERT_TRUE(runEventsUntil([&] { return looks.size() == 4; }));
    EXPECT_EQ(looks[0].font->points, 18);
    EXPECT_EQ(looks[1].highContrast, true);
    EXPECT_EQ(looks[2].accent, 0xFF0000U);
    EXPECT_EQ(looks[3].accent, std::nullopt);
    EXPECT_EQ(ear.heard, 0);
}

/// A file kdeglobals for as long as the object lives.
class KdeFile {
public:
    explicit KdeFile(const QByteArray& contents) { write(contents); }
    ~KdeFile() { QFile::remove(m_path); }
    KdeFile(const KdeFile&) = delete;
    KdeFile& operator=(const KdeFile&) = delete;
    /// Replaces the file, as the desktop does.
    void write(const QByteArray& contents)
    {
        QDir().mkpath(QFileInfo(m_path).path());
        QSaveFile file(m_path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        ASSERT_TRUE(file.commit());
    }

private:
    QString m_path
        = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/kdeglobals";
};

TEST(DesktopPreferencesTest, WithoutAPortalKdeglobalsDecidesAndIsFollowed)
{
    KdeFile file("[General]\nfont=Noto Sans,14\n[Colors:Window]\nBackgroundNormal=30,30,30\n");
    DesktopPreferences preferences;
    const Ear ear(preferences);
    EXPECT_EQ(preferences.look().font, (DesktopLook::Font{"Noto Sans", 14}));
    EXPECT_TRUE(preferences.prefersDark());
    for (const int points : {15, 16}) {
        file.write("[General]\nfont=Noto Sans," + QByteArray::number(points)
            + "\n[Colors:Window]\nBackgroundNormal=240,240,240\n");
        ASSERT_TRUE(runEventsUntil([&] { return preferences.look().font->points == points; }));
    }
    EXPECT_FALSE(preferences.prefersDark());
    EXPECT_EQ(ear.heard, 1);
}

TEST(DesktopPreferencesTest, OnlyInAKdeSessionKdeglobalsNamesTheFontBeforeThePortal)
{
    const KdeFile file(
        "[General]\nfont=Noto Sans,14\n[Colors:Window]\nBackgroundNormal=30,30,30\n");
    const FakeSettingsPortal desktop(
        FakeSettingsPortal::Settings{{"org.freedesktop.appearance", {{"color-scheme", 2U}}},
            {"org.gnome.desktop.interface", {{"font-name", "Cantarell 11"}}}});
    const struct {
        const char* desktop;
        const char* family;
    } rows[] = {{"GNOME", "Cantarell"}, {"KDE", "Noto Sans"}, {"X-Vendor:KDE", "Noto Sans"},
        {"XKDE", "Cantarell"}, {"", "Cantarell"}};
    for (const auto& row : rows) {
        const ScopedVariable session("XDG_CURRENT_DESKTOP", row.desktop);
        DesktopPreferences preferences;
        preferences.waitForFirstReply(10s);
        EXPECT_EQ(preferences.look().font->family, row.family) << row.desktop;
        EXPECT_FALSE(preferences.prefersDark()) << row.desktop;
    }
}

/// A settings manager of the X display.
class SettingsManager {
public:
    SettingsManager()
        : m_window(m_windows.make())
    {
    }
    void publish(XSettingsBytes& settings)
    {
        const auto property = m_windows.atom("_XSETTINGS_SETTINGS");
        m_windows.set(m_window, property, property, settings.bytes());
        m_windows.sync();
    }
    void publish(const std::string& theme, const std::string& font)
    {
        publish(XSettingsBytes().string("Net/ThemeName", theme).string("Gtk/FontName", font));
    }
    void takeOver() { m_windows.manage(m_windows.atom("_XSETTINGS_S0"), m_window); }

private:
    X11Windows m_windows;
    xcb_window_t m_window;
};

TEST(DesktopPreferencesTest, TheSettingsManagerOfTheDisplayIsFollowed)
{
    auto manager = std::make_unique<SettingsManager>();
    manager->publish("Greybird-dark", "Sans 13");
    manager->takeOver();
    DesktopPreferences preferences;
    EXPECT_EQ(preferences.look().font, (DesktopLook::Font{"Sans", 13}));
    EXPECT_TRUE(preferences.prefersDark());
    manager->publish("Greybird", "Sans 18");
    ASSERT_TRUE(runEventsUntil([&] { return preferences.look().font->points == 18; }));
    EXPECT_FALSE(preferences.prefersDark());
    manager.reset();
    ASSERT_TRUE(runEventsUntil([&] { return !preferences.look().font; }));
}

TEST(DesktopPreferencesTest, ASettingsManagerThatComesLaterIsHeard)
{
    DesktopPreferences preferences;
    EXPECT_FALSE(preferences.look().font);
    SettingsManager manager;
    manager.publish("HighContrast", "Sans 20");
    manager.takeOver();
    ASSERT_TRUE(runEventsUntil([&] { return preferences.look().font.has_value(); }));
    EXPECT_EQ(preferences.look().highContrast, true);
}

TEST(DesktopPreferencesTest, ATextSizeThatTheDisplaysResolutionHasIsNotCountedTwice)
{
    const FakeSettingsPortal desktop(FakeSettingsPortal::Settings{
        {"org.gnome.desktop.interface", {{"text-scaling-factor", 1.5}}}});
    SettingsManager manager;
    manager.publish(XSettingsBytes().number("Xft/DPI", 144 * 1024));
    manager.takeOver();
    DesktopPreferences preferences;
    preferences.waitForFirstReply(10s);
    EXPECT_EQ(preferences.look().textScale, 1);
}

TEST(DesktopPreferencesTest, TheFontOfTheDisplayComesBeforeThePortalsAndItsThemeAfter)
{
    SettingsManager manager;
    manager.publish("Greybird-dark", "Sans 13");
    manager.takeOver();
    const FakeSettingsPortal desktop(
        FakeSettingsPortal::Settings{{"org.freedesktop.appearance", {{"color-scheme", 0U}}},
            {"org.gnome.desktop.interface", {{"font-name", "Cantarell 11"}}}});
    DesktopPreferences preferences;
    preferences.waitForFirstReply(10s);
    EXPECT_EQ(preferences.look().font->family, "Sans");
    EXPECT_FALSE(preferences.prefersDark());
}

TEST(DesktopPreferencesTest, WithoutAPortalTheFirstPaintDoesNotWait)
{
    DesktopPreferences portal;
    const auto started = Clock::now();
    portal.waitForFirstReply(10s);
    EXPECT_LT(Clock::now() - started, 1s);
    EXPECT_EQ(style(portal), "-");
}

TEST(DesktopPreferencesTest, APortalThatKeepsSilentCostsNoMoreThanTheLimit)
{
    FakeSettingsPortal desktop(1, Manner::KeepsSilent);
    DesktopPreferences portal;
    const auto started = Clock::now();
    portal.waitForFirstReply(50ms);
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

TEST(DesktopPreferencesTest, APortalThatRefusesIsLightUntilItSignalsAChange)
{
    FakeSettingsPortal desktop(1, Manner::Refuses);
    DesktopPreferences portal;
    portal.waitForFirstReply(10s);
    EXPECT_EQ(style(portal), "-");
    desktop.setColorScheme(1);
    EXPECT_TRUE(runEventsUntil([&] { return portal.prefersDark(); }));
}

TEST(DesktopPreferencesTest, APortalThatComesLaterIsHeard)
{
    DesktopPreferences portal;
    portal.waitForFirstReply(10s);
    FakeSettingsPortal desktop(0);
    desktop.setColorScheme(1);
    EXPECT_TRUE(runEventsUntil([&] { return portal.prefersDark(); }));
}

TEST(DesktopPreferencesTest, ItMayEndWhileAnAnswerIsPending)
{
    FakeSettingsPortal desktop(1, Manner::KeepsSilent);
    {
        DesktopPreferences portal;
        ASSERT_TRUE(runEventsUntil([&] { return desktop.reads() > 0; }));
    }
    desktop.answerAtLast();
    DesktopPreferences second;
    EXPECT_TRUE(runEventsUntil([&] { return desktop.reads() > 1; }));
}

} // namespace
} // namespace zarn::linux_backend
