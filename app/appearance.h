// SPDX-License-Identifier: MIT
#pragma once

#include "platform/attributed_text.h"
#include "platform/product_texts.h"

#include <optional>

namespace zarn {

class SettingsDomain;
class TextView;
class View;

/// Light and dark painting of the About and terms views, and the notice text that both show.
/// One per process. Main thread only.
class Appearance {
public:
    Appearance(const SettingsDomain& standardDefaults, ProductTexts texts)
        : m_standardDefaults(standardDefaults)
        , m_texts(std::move(texts))
    {
    }

    /// The desktop prefers dark.
    bool isDarkMode() const;
    /// Paints the view's layer and refills the text view in the matching colour. A text view
    /// without text storage, or none, is left alone.
    void applyAppearance(bool dark, View& view, TextView* textView);
    /// Disclaimer, feedback line, warning and licence, in the current colour.
    AttributedText noticeText();

private:
    TextColor noticeTextColor();

    const SettingsDomain& m_standardDefaults;
    ProductTexts m_texts;
    std::optional<TextColor> m_noticeTextColor;
};

} // namespace zarn
