// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_appearance.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOption>
#include <QToolTip>

namespace zarn::linux_backend {

namespace {

struct Colors {
    QRgb window, base, alternate, button, text, disabled, highlight, highlighted, link, placeholder;
};

// Every pair of text and background reaches a contrast of 4.5 at least; what is disabled is exempt.
constexpr Colors light{0xfff2f2f2, 0xffffffff, 0xfff7f7f7, 0xffe9e9e9, 0xff1a1a1a, 0xff8c8c8c,
    0xff1f5fa8, 0xffffffff, 0xff174a86, 0xff6b6b6b};
constexpr Colors dark{0xff2b2b2b, 0xff1e1e1e, 0xff262626, 0xff484848, 0xfff0f0f0, 0xff808080,
    0xff2f6bb0, 0xffffffff, 0xff9cc4f8, 0xffa0a0a0};

QPalette paletteOf(const Colors& colors)
{
    QPalette palette(QColor(colors.button), QColor(colors.window));
    const auto text = QColor(colors.text);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
             QPalette::ToolTipText, QPalette::BrightText})
        palette.setColor(role, text);
    palette.setColor(QPalette::Window, QColor(colors.window));
    palette.setColor(QPalette::Button, QColor(colors.button));
    palette.setColor(QPalette::Base, QColor(colors.base));
    palette.setColor(QPalette::AlternateBase, QColor(colors.alternate));
    palette.setColor(QPalette::ToolTipBase, QColor(colors.base));
    palette.setColor(QPalette::Highlight, QColor(colors.highlight));
    palette.setColor(QPalette::HighlightedText, QColor(colors.highlighted));
    palette.setColor(QPalette::Link, QColor(colors.link));
    palette.setColor(QPalette::LinkVisited, QColor(colors.link));
    palette.setColor(QPalette::PlaceholderText, QColor(colors.placeholder));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(colors.disabled));
    return palette;
}

/// Fusion frames fields and check boxes a little darker than the window, which in a dark one is
/// next to nothing. Here they stand out at a contrast of 3 at least.
class FramedFusion final : public QProxyStyle {
public:
    FramedFusion()
        : QProxyStyle("Fusion")
    {
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override
    {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        const bool isField = element == PE_FrameLineEdit && !option->state.testFlag(State_HasFocus);
        if (!option->state.testFlag(State_Enabled) || !(isField || element == PE_IndicatorCheckBox))
            return;
        const bool isDark = option->palette.window().color().lightness() < 128;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QColor(isDark ? 0xff8f8f8f : 0xff808080));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
        painter->restore();
    }
};

} // namespace

void useOwnStyle()
{
    QApplication::setStyle(new FramedFusion);
}

void applyDark(bool isDark)
{
    const auto palette = paletteOf(isDark ? dark : light);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

} // namespace zarn::linux_backend
