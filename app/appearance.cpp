// SPDX-License-Identifier: MIT
#include "app/appearance.h"

#include "platform/controls.h"
#include "platform/settings.h"
#include "platform/view_controller.h"

namespace zarn {

namespace {

const Font systemFont{"", 12};
const Font italicFont{"HelveticaNeue-Italic", 12};

constexpr const char* disclaimer
    = "Zarn Actions adds interactions with the Zarn Pro server to Apple Shortcuts. It is not part "
      "of the Zarn product line, is not supported through Zarn's usual support channels, and has "
      "not been tested or validated by Zarn's internal compliance, quality or product-security "
      "processes.\n";
constexpr const char* warning
    = "\nWarning: Failure to test shortcuts thoroughly on non production devices could result in "
      "data loss.\n";

/// One paragraph, the first occurrence of `linked` in it a link. Without it the paragraph is plain.
void append(AttributedText& notice, const std::string& paragraph, const Font& font, TextColor color,
    const std::string& linked = "", const std::string& address = "")
{
    const auto at = linked.empty() ? std::string::npos : paragraph.find(linked);
    if (at == std::string::npos) {
        notice.push_back({paragraph, font, color, std::nullopt});
        return;
    }
    const auto end = at + linked.size();
    if (at > 0)
        notice.push_back({paragraph.substr(0, at), font, color, std::nullopt});
    notice.push_back({linked, font, color, address});
    if (end < paragraph.size())
        notice.push_back({paragraph.substr(end), font, color, std::nullopt});
}

} // namespace

bool Appearance::isDarkMode() const
{
    return m_standardDefaults.string("AppleInterfaceStyle") == "Dark";
}

TextColor Appearance::noticeTextColor()
{
    if (!m_noticeTextColor)
        m_noticeTextColor = isDarkMode() ? TextColor::White : TextColor::Black;
    return *m_noticeTextColor;
}

void Appearance::applyAppearance(bool dark, View& view, TextView* textView)
{
    // The same grey in both modes: the light look is the dark grey at 20 % opacity over the window.
    if (view.hasLayer())
        view.setLayerBackground(0.2, dark ? 1.0 : 0.2);
    m_noticeTextColor = isDarkMode() ? TextColor::White : TextColor::Black;
    if (textView && textView->hasTextStorage())
        textView->setAttributedText(noticeText());
}

AttributedText Appearance::noticeText()
{
    const auto color = noticeTextColor();
    AttributedText notice;
    append(notice, disclaimer, systemFont, color);
    append(notice, "\nPlease navigate to " + m_texts.feedbackAddress + " and submit feedback\n",
        systemFont, color, m_texts.feedbackAddress, "https://" + m_texts.feedbackAddress);
    append(notice, warning, italicFont, color);
    append(notice,
        "    \nThis software is licensed under the terms of the " + m_texts.agreementTitle
            + ".\n\nCopyright \u00a9 2024 " + m_texts.publisherName + ".",
        systemFont, color, m_texts.agreementTitle, m_texts.agreementUrl);
    return notice;
}

} // namespace zarn
