// SPDX-License-Identifier: MIT
#include "app/appearance.h"

#include "app/notice_text.h"
#include "platform/controls.h"
#include "platform/settings.h"
#include "platform/view_controller.h"

namespace zarn {

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
    return zarn::noticeText(m_texts, noticeTextColor());
}

} // namespace zarn
