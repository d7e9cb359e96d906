// SPDX-License-Identifier: MIT
#include "app/notice_text.h"

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

AttributedText noticeText(const ProductTexts& texts, TextColor color)
{
    AttributedText notice;
    notice.push_back({disclaimer, systemFont, color, std::nullopt});
    appendWithLink(notice,
        "\nPlease navigate to " + texts.feedbackAddress + " and submit feedback\n", color,
        texts.feedbackAddress, "https://" + texts.feedbackAddress);
    notice.push_back({warning, italicFont, color, std::nullopt});
    appendWithLink(notice,
        "    \nThis software is licensed under the terms of the " + texts.agreementTitle
            + ".\n\nCopyright \u00a9 2024 " + texts.publisherName + ".",
        color, texts.agreementTitle, texts.agreementUrl);
    return notice;
}

} // namespace zarn
