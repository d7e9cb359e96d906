// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zarn {

struct Font {
    /// "" is the system font.
    std::string name;
    double pointSize = 12;
    bool operator==(const Font&) const = default;
};

enum class TextColor { Black, White };

/// A stretch of text with one set of attributes. UTF-8.
struct TextRun {
    std::string text;
    Font font;
    TextColor color = TextColor::Black;
    /// The address that a click opens.
    std::optional<std::string> link;
    bool operator==(const TextRun&) const = default;
};

using AttributedText = std::vector<TextRun>;

} // namespace zarn
