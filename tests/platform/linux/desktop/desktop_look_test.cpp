// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/desktop_look.h"

#include "tests/support/x_settings_bytes.h"

#include <gtest/gtest.h>

#include <limits>

namespace zarn::linux_backend {
namespace {

using Font = DesktopLook::Font;

TEST(FontName, GivesFamilyAndSize)
{
    const struct {
        std::string_view name;
        std::optional<Font> font;
    } rows[] = {{"Cantarell 11", Font{"Cantarell", 11}},
        {"Noto Sans 10.5", Font{"Noto Sans", 10.5}},
        {"Noto Sans Bold Italic 12", Font{"Noto Sans", 12}}, {"  Sans   9 ", Font{"Sans", 9}},
        {"DejaVu Sans, 14", Font{"DejaVu Sans", 14}}, {"Bold 10", Font{"Bold", 10}},
        {"Sans", std::nullopt}, {"12", std::nullopt}, {"", std::nullopt}, {"Sans 0", std::nullopt},
        {"Sans 3.9", std::nullopt}, {"Sans 4", Font{"Sans", 4}}, {"Sans 72", Font{"Sans", 72}},
        {"Sans 72.1", std::nullopt}, {"Sans -10", std::nullopt}, {"Sans nan", std::nullopt},
        {"Sans inf", std::nullopt}, {"Sans 10px", std::nullopt}, {"\xff 10", std::nullopt}};
    for (const auto& row : rows)
        EXPECT_EQ(fontFromName(row.name), row.font) << row.name;
}

TEST(FontName, AFamilyOfAnyLengthIsNotTaken)
{
    EXPECT_TRUE(fontFromName(std::string(200, 'a') + " 10"));
    EXPECT_FALSE(fontFromName(std::string(201, 'a') + " 10"));
}

TEST(TextScale, IsBounded)
{
    EXPECT_EQ(usableTextScale(1.25), 1.25);
    EXPECT_EQ(usableTextScale(0.5), 0.5);
    EXPECT_EQ(usableTextScale(4), 4);
    EXPECT_EQ(usableTextScale(0.49), std::nullopt);
    EXPECT_EQ(usableTextScale(4.01), std::nullopt);
    EXPECT_EQ(usableTextScale(std::numeric_limits<double>::quiet_NaN()), std::nullopt);
}

TEST(AccentColor, PartsOutsideOfTheirRangeMeanNone)
{
    EXPECT_EQ(colorFromParts(0, 0.5, 1), 0x0080FFU);
    EXPECT_EQ(colorFromParts(-1, 0, 0), std::nullopt);
    EXPECT_EQ(colorFromParts(0, 1.01, 0), std::nullopt);
    EXPECT_EQ(colorFromParts(0, 0, std::numeric_limits<double>::quiet_NaN()), std::nullopt);
}

TEST(KdeGlobals, GivesFontColorsAndAccent)
{
    const auto look = lookFromKdeGlobals("[Colors:Selection]\nBackgroundNormal=1,2,3\n\n"
                                         "[Colors:Window]\nBackgroundNormal=42,46,50\n"
                                         "[General]\nAccentColor = 61,174,233\n"
                                         "font=Noto Sans,14,-1,5,50,0,0,0,0,0\n");
    EXPECT_EQ(look.font, (Font{"Noto Sans", 14}));
    EXPECT_EQ(look.dark, true);
    EXPECT_EQ(look.accent, 0x3DAEE9U);
    EXPECT_EQ(look.textScale, std::nullopt);
    EXPECT_EQ(look.highContrast, std::nullopt);
}

TEST(KdeGlobals, ALightWindowIsLightAndTheSelectionServesAsAccent)
{
    const auto look = lookFromKdeGlobals("[Colors:Window]\r\nBackgroundNormal=239,240,241\r\n["
                                         "Colors:Selection]\r\nBackgroundNormal=0,0,255\r\n");
    EXPECT_EQ(look.dark, false);
    EXPECT_EQ(look.accent, 0x0000FFU);
    EXPECT_EQ(look.font, std::nullopt);
}

TEST(KdeGlobals, WhatIsMalformedSaysNothing)
{
    for (const char* contents : {"", "font=Sans,10", "[General]", "[General]\nfont=Sans",
             "[General]\nfont=,10", "[General]\nfont=Sans,huge", "[General]\nfont=Sans,1e9",
             "[Colors:Window]\nBackgroundNormal=1,2", "[Colors:Window]\nBackgroundNormal=1,2,256",
             "[General]\nAccentColor=-1,0,0", "[", "]", "=", "\0"})
        EXPECT_EQ(lookFromKdeGlobals(contents), DesktopLook()) << contents;
}

TEST(XSettings, GiveTheFontAndTheThemesColors)
{
    for (const bool isBigEndian : {false, true}) {
        const auto look = lookFromXSettings(XSettingsBytes(isBigEndian)
                                                .number("Net/DoubleClickTime", 400)
                                                .string("Net/ThemeName", "Adwaita-dark")
                                                .color("Net/Color")
                                                .string("Gtk/FontName", "Sans Bold 13")
                                                .bytes());
        EXPECT_EQ(look.font, (Font{"Sans", 13}));
        EXPECT_EQ(look.dark, true);
        EXPECT_EQ(look.highContrast, false);
        EXPECT_EQ(look.accent, std::nullopt);
    }
}

TEST(XSettings, AResolutionStandsForTheTextSize)
{
    EXPECT_EQ(
        lookFromXSettings(XSettingsBytes().number("Xft/DPI", 144 * 1024).bytes()).textScale, 1);
    EXPECT_EQ(
        lookFromXSettings(XSettingsBytes().string("Xft/DPI", "1").bytes()).textScale, std::nullopt);
}

TEST(XSettings, ThemeNamesThatAreKnown)
{
    const struct {
        const char* name;
        bool dark;
        bool highContrast;
    } rows[]
        = {{"Adwaita", false, false}, {"Greybird-dark", true, false}, {"Yaru-Dark", true, false},
            {"HighContrast", false, true}, {"HighContrastInverse", true, true}};
    for (const auto& row : rows) {
        const auto look
            = lookFromXSettings(XSettingsBytes().string("Net/ThemeName", row.name).bytes());
        EXPECT_EQ(look.dark, row.dark) << row.name;
        EXPECT_EQ(look.highContrast, row.highContrast) << row.name;
    }
}

TEST(XSettings, EveryBeginningOfAValueIsReadWithoutHarm)
{
    const auto whole
        = XSettingsBytes().string("Gtk/FontName", "Sans 13").string("Net/ThemeName", "A").bytes();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const auto look = lookFromXSettings(whole.substr(0, length));
        EXPECT_EQ(look.dark, std::nullopt) << length;
    }
    EXPECT_EQ(lookFromXSettings(whole).dark, false);
}

TEST(XSettings, AnUnknownTypeAndAFalseCountEndTheReading)
{
    auto bytes = XSettingsBytes().string("Gtk/FontName", "Sans 13").bytes();
    bytes[8] = '\xff';
    EXPECT_EQ(lookFromXSettings(bytes).font, (Font{"Sans", 13}));
    bytes[12] = 9;
    EXPECT_EQ(lookFromXSettings(bytes), DesktopLook());
}

TEST(DesktopLook, TheFirstSourceThatKnowsAMemberDecides)
{
    DesktopLook first;
    first.dark = false;
    DesktopLook second;
    second.dark = true;
    second.font = Font{"B", 2};
    DesktopLook third;
    third.font = Font{"C", 3};
    third.textScale = 1.5;
    third.accent = 7;
    third.highContrast = true;
    const auto look = combined({first, second, third});
    EXPECT_EQ(look.dark, false);
    EXPECT_EQ(look.font, (Font{"B", 2}));
    EXPECT_EQ(look.textScale, 1.5);
    EXPECT_EQ(look.accent, 7U);
    EXPECT_EQ(look.highContrast, true);
    EXPECT_EQ(combined({}), DesktopLook());
}

} // namespace
} // namespace zarn::linux_backend
