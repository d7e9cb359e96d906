// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/desktop_look.h"

#include "base/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <vector>

namespace zarn::linux_backend {

namespace {

// Out of these bounds a setting is a mistake, and following it would leave a window that nobody can
// use to correct it.
constexpr double smallestFont = 4;
constexpr double largestFont = 72;
constexpr std::size_t longestFamily = 200;

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<double> number(std::string_view text)
{
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> pieces;
    for (;;) {
        const auto end = text.find(separator);
        pieces.push_back(trimmed(text.substr(0, end)));
        if (end == std::string_view::npos)
            return pieces;
        text.remove_prefix(end + 1);
    }
}

bool isStyleWord(std::string_view word)
{
    static constexpr std::array<std::string_view, 17> words{"Thin", "Light", "Book", "Regular",
        "Normal", "Medium", "Semi-Bold", "Semibold", "Demi-Bold", "Bold", "Extra-Bold", "Black",
        "Heavy", "Italic", "Oblique", "Condensed", "Semi-Condensed"};
    return std::ranges::find(words, word) != words.end();
}

std::optional<std::uint32_t> colorFromBytes(std::string_view text)
{
    const auto parts = split(text, ',');
    if (parts.size() < 3)
        return std::nullopt;
    std::uint32_t color = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const auto value = number(parts[i]);
        if (!value || *value < 0 || *value > 255)
            return std::nullopt;
        color = color << 8U | static_cast<std::uint32_t>(*value);
    }
    return color;
}

bool isDarkColor(std::uint32_t color)
{
    const auto part
        = [color](unsigned shift) { return static_cast<double>(color >> shift & 0xFFU); };
    return 0.299 * part(16) + 0.587 * part(8) + 0.114 * part(0) < 128;
}

/// "[Group]" lines, and "key=value" lines below each. The value of a key that stands twice is its
/// last.
class IniFile {
public:
    explicit IniFile(std::string_view contents)
    {
        std::string group;
        for (const auto line : split(contents, '\n')) {
            if (line.size() > 2 && line.front() == '[' && line.back() == ']')
                group = line.substr(1, line.size() - 2);
            else if (const auto equals = line.find('='); equals != std::string_view::npos)
                m_values[group + '/' + std::string(trimmed(line.substr(0, equals)))]
                    = trimmed(line.substr(equals + 1));
        }
    }
    std::optional<std::string_view> value(const std::string& groupAndKey) const
    {
        const auto found = m_values.find(groupAndKey);
        return found == m_values.end() ? std::nullopt : std::optional(found->second);
    }

private:
    std::map<std::string, std::string_view> m_values;
};

/// Reads the integers of the settings of X programs, in the byte order that the first byte names.
class XSettingsReader {
public:
    explicit XSettingsReader(std::string_view bytes)
        : m_bytes(bytes)
        , m_isBigEndian(!bytes.empty() && bytes.front() != 0)
    {
    }
    bool failed() const { return m_failed; }
    void skip(std::size_t count) { take(count); }
    void skipToMultipleOf4() { skip((4 - m_at % 4) % 4); }
    std::uint32_t integer(std::size_t size)
    {
        const auto bytes = take(size);
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const auto byte = bytes[m_isBigEndian ? i : bytes.size() - 1 - i];
            value = value << 8U | static_cast<unsigned char>(byte);
        }
        return value;
    }
    std::string_view take(std::size_t count)
    {
        if (count > m_bytes.size() - m_at) {
            m_failed = true;
            return {};
        }
        m_at += count;
        return m_bytes.substr(m_at - count, count);
    }

private:
    std::string_view m_bytes;
    std::size_t m_at = 0;
    bool m_isBigEndian;
    bool m_failed = false;
};

void adoptXSetting(DesktopLook& look, std::string_view name, std::string_view text)
{
    if (name == "Gtk/FontName") {
        look.font = fontFromName(text);
    } else if (name == "Net/ThemeName") {
        look.highContrast = text.starts_with("HighContrast");
        look.dark
            = text.ends_with("-dark") || text.ends_with("-Dark") || text == "HighContrastInverse";
    }
}

} // namespace

DesktopLook combined(std::initializer_list<DesktopLook> sources)
{
    DesktopLook result;
    const auto adopt = [](auto& member, const auto& from) {
        if (!member)
            member = from;
    };
    for (const auto& source : sources) {
        adopt(result.font, source.font);
        adopt(result.textScale, source.textScale);
        adopt(result.dark, source.dark);
        adopt(result.accent, source.accent);
        adopt(result.highContrast, source.highContrast);
    }
    return result;
}

std::optional<DesktopLook::Font> usableFont(std::string_view family, double points)
{
    if (family.empty() || family.size() > longestFamily || !isUtf8(family) || points < smallestFont
        || points > largestFont)
        return std::nullopt;
    return DesktopLook::Font{std::string(family), points};
}

std::optional<DesktopLook::Font> fontFromName(std::string_view name)
{
    name = trimmed(name);
    const auto sizeAt = name.rfind(' ');
    if (sizeAt == std::string_view::npos)
        return std::nullopt;
    const auto points = number(name.substr(sizeAt + 1));
    auto family = trimmed(name.substr(0, sizeAt));
    for (auto blank = family.rfind(' ');
         blank != std::string_view::npos && isStyleWord(family.substr(blank + 1));
         blank = family.rfind(' '))
        family = trimmed(family.substr(0, blank));
    if (family.ends_with(','))
        family.remove_suffix(1);
    return points ? usableFont(family, *points) : std::nullopt;
}

std::optional<double> usableTextScale(double factor)
{
    return factor >= 0.5 && factor <= 4 ? std::optional(factor) : std::nullopt;
}

std::optional<std::uint32_t> colorFromParts(double red, double green, double blue)
{
    std::uint32_t color = 0;
    for (const double part : {red, green, blue}) {
        if (!(part >= 0 && part <= 1))
            return std::nullopt;
        color = color << 8U | static_cast<std::uint32_t>(std::lround(part * 255));
    }
    return color;
}

DesktopLook lookFromKdeGlobals(std::string_view contents)
{
    const IniFile file(contents);
    DesktopLook look;
    if (const auto font = file.value("General/font")) {
        const auto parts = split(*font, ',');
        const auto points = parts.size() > 1 ? number(parts[1]) : std::nullopt;
        if (points)
            look.font = usableFont(parts[0], *points);
    }
    if (const auto window = file.value("Colors:Window/BackgroundNormal")) {
        if (const auto color = colorFromBytes(*window))
            look.dark = isDarkColor(*color);
    }
    for (const char* key : {"Colors:Selection/BackgroundNormal", "General/AccentColor"}) {
        const auto value = file.value(key);
        if (const auto accent = value ? colorFromBytes(*value) : std::nullopt)
            look.accent = accent;
    }
    return look;
}

DesktopLook lookFromXSettings(std::string_view bytes)
{
    enum Type : std::uint32_t { Integer = 0, String = 1, Color = 2 };
    XSettingsReader reader(bytes);
    reader.skip(4 + 4); // Byte order with padding, serial number.
    const auto count = reader.integer(4);
    DesktopLook look;
    for (std::uint32_t i = 0; i < count && !reader.failed(); ++i) {
        const auto type = reader.integer(1);
        reader.skip(1);
        const auto name = reader.take(reader.integer(2));
        reader.skipToMultipleOf4();
        reader.skip(4); // When it last changed.
        if (type == String) {
            const auto text = reader.take(reader.integer(4));
            reader.skipToMultipleOf4();
            if (!reader.failed())
                adoptXSetting(look, name, text);
        } else if (type == Integer || type == Color) {
            reader.skip(type == Integer ? 4 : 8);
            // The toolkit follows this resolution, and the desktop has counted its text size in.
            if (name == "Xft/DPI" && !reader.failed())
                look.textScale = 1;
        } else {
            break;
        }
    }
    return look;
}

} // namespace zarn::linux_backend
