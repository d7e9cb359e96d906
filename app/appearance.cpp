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

/// A paragraph that has `linked` in it; its first occurrence is the link. Plain when it is empty.
void appendWithLink(AttributedText& notice, const std::string& paragraph, TextColor color,
    const std::string& linked, const std::string& address)
{
    if (linked.empty()) {
        notice.push_back({paragraph, systemFont, color, std::nullopt});
        return;
    }
    const auto at = paragraph.find(linked);
    notice.push_back({paragraph.substr(0, at), systemFont, color, std::nullopt});
    notice.push_back({linked, systemFont, color, address});
    notice.push_back({paragraph.substr(at + linked.size()), systemFont, color, std::nullopt});
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
    notice.push_back({disclaimer, systemFont, color, std::nullopt});
    appendWithLink(notice,
        "\nPlease navigate to " + m_texts.feedbackAddress + " and submit feedback\n", color,
        m_texts.feedbackAddress, "https://" + m_texts.feedbackAddress);
    notice.push_back({warning, italicFont, color, std::nullopt});
    appendWithLink(notice,
        "    \nThis software is licensed under the terms of the " + m_texts.agreementTitle
            + ".\n\nCopyright \u00a9 2024 " + m_texts.publisherName + ".",
        color, m_texts.agreementTitle, m_texts.agreementUrl);
    return notice;
}

} // namespace zarn
