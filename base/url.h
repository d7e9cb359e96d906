// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zarn {

/// A text that can be formed into a URL. A missing or unknown scheme, an empty host or a port out
/// of range are allowed here: the request fails when the URL is opened.
class Url {
public:
    /// Nothing when `text` is empty or not UTF-8, holds a control character, a blank, one of
    /// <>"{}|\^ or a back quote, a percent sign without two hexadecimal digits, or unbalanced
    /// brackets around its host. Any thread.
    static std::optional<Url> fromText(std::string_view text);
    /// What keeps `text` from being a URL, to follow "holds": "a blank". Nothing for a text that
    /// can be formed. Any thread.
    static std::optional<std::string> problemIn(std::string_view text);

    /// The original text.
    const std::string& text() const { return m_text; }

private:
    explicit Url(std::string text)
        : m_text(std::move(text))
    {
    }

    std::string m_text;
};

} // namespace zarn
