// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace zarn::linux_backend {

/// What the user has chosen for every program of the desktop, as far as one source knows it. A
/// member without a value was not chosen there.
struct DesktopLook {
    struct Font {
        std::string family;
        double points = 0;
        /// The size on a desktop whose user never chose one.
        double usualPoints = 10;
        bool operator==(const Font&) const = default;
    };
    std::optional<Font> font;
    /// A factor on the size of all text.
    std::optional<double> textScale;
    std::optional<bool> dark;
    /// 0xRRGGBB.
    std::optional<std::uint32_t> accent;
    std::optional<bool> highContrast;
    bool operator==(const DesktopLook&) const = default;
};

/// Takes each member from the first source that has it.
DesktopLook combined(std::initializer_list<DesktopLook> sources);

/// The font that a text such as "Noto Sans Bold 10.5" names: family, styles, size in points.
/// Nothing when it has no family, or no size that a person could read.
std::optional<DesktopLook::Font> fontFromName(std::string_view name);
/// The same, unless the family is empty or too long or the size out of range.
std::optional<DesktopLook::Font> usableFont(std::string_view family, double points);
/// A factor from 0.5 to 4, else nothing.
std::optional<double> usableTextScale(double factor);
/// Three parts from 0 to 1 each. Nothing when one is outside: that is how "not set" is written.
std::optional<std::uint32_t> colorFromParts(double red, double green, double blue);

/// What a file kdeglobals with these contents says.
DesktopLook lookFromKdeGlobals(std::string_view contents);

/// What a value of the property _XSETTINGS_SETTINGS says. Malformed bytes say nothing.
DesktopLook lookFromXSettings(std::string_view bytes);

} // namespace zarn::linux_backend
