// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_appearance.h"

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>
#include <QPalette>
#include <QPolygonF>
#include <QProxyStyle>
#include <QStyleOption>
#include <QToolTip>
#include <QTransform>

#include <algorithm>
#include <cmath>

namespace zarn::linux_backend {

namespace {

struct Colors {
    QRgb window, base, alternate, button, text, disabled, highlight, highlighted, link, placeholder,
        frame;
};

// Every pair of text and background reaches a contrast of 4.5 at least, frames and the colour of
// links, which is that of the focus too, 3; what is disabled is exempt.
constexpr Colors light{0xfff2f2f2, 0xffffffff, 0xfff7f7f7, 0xffe9e9e9, 0xff1a1a1a, 0xff8c8c8c,
    0xff1f5fa8, 0xffffffff, 0xff174a86, 0xff6b6b6b, 0xff808080};
constexpr Colors dark{0xff2b2b2b, 0xff1e1e1e, 0xff262626, 0xff484848, 0xfff0f0f0, 0xff808080,
    0xff2f6bb0, 0xffffffff, 0xff9cc4f8, 0xffa0a0a0, 0xff8f8f8f};
// High contrast: 7 for text, what is disabled included, and 4.5 for frames.
constexpr Colors lightContrast{0xffffffff, 0xffffffff, 0xffffffff, 0xffffffff, 0xff000000,
    0xff4a4a4a, 0xff00326e, 0xffffffff, 0xff00326e, 0xff4a4a4a, 0xff000000};
constexpr Colors darkContrast{0xff000000, 0xff000000, 0xff000000, 0xff000000, 0xffffffff,
    0xffb8b8b8, 0xffffe100, 0xff000000, 0xffffe100, 0xffb8b8b8, 0xffffffff};

double luminance(const QColor& color)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
        + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& first, const QColor& second)
{
    const auto [darker, lighter] = std::minmax({luminance(first), luminance(second)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// The accent serves where it can be told from the fields that it stands in, with a readable text
/// on it.
void adoptAccent(Colors& colors, std::uint32_t accent)
{
    const QColor color(QRgb(0xff000000U | accent));
    if (contrast(color, QColor(colors.base)) < 1.5)
        return;
    for (const QRgb text : {0xffffffffU, 0xff000000U}) {
        if (contrast(color, QColor(text)) >= 4.5) {
            colors.highlight = color.rgb();
            colors.highlighted = text;
            return;
        }
    }
}

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
    // The style derives no frame from this role.
    palette.setColor(QPalette::Shadow, QColor(colors.frame));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(colors.disabled));
    return palette;
}

/// Fusion with frames and a focus that stand out, and with marks that grow with the font. Its own
/// frames are a little darker than the window, which in a dark one is next to nothing, and its own
/// focus is a tint of them.
class FramedFusion final : public QProxyStyle {
public:
    FramedFusion()
        : QProxyStyle("Fusion")
    {
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override
    {
        switch (element) {
        case PE_FrameFocusRect:
            drawFocus(*option, *painter);
            return;
        case PE_IndicatorArrowDown:
        case PE_IndicatorArrowRight:
            drawArrow(*option, *painter, element == PE_IndicatorArrowDown);
            return;
        default:
            break;
        }
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        const bool hasRing = element == PE_FrameLineEdit || element == PE_PanelButtonCommand;
        if (hasRing && option->state.testFlag(State_HasFocus))
            drawFocus(*option, *painter);
        else if ((hasRing || element == PE_IndicatorCheckBox)
            && option->state.testFlag(State_Enabled))
            drawFrame(*option, *painter);
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
        QPainter* painter, const QWidget* widget) const override
    {
        if (control != CC_ComboBox) {
            QProxyStyle::drawComplexControl(control, option, painter, widget);
            return;
        }
        drawPopUp(*option, *painter, widget);
        if (option->state.testFlag(State_HasFocus))
            drawFocus(*option, *painter);
        else if (option->state.testFlag(State_Enabled))
            drawFrame(*option, *painter);
    }

    int pixelMetric(
        PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override
    {
        const int usual = QProxyStyle::pixelMetric(metric, option, widget);
        switch (metric) {
        case PM_IndicatorWidth:
        case PM_IndicatorHeight:
        case PM_SmallIconSize:
        case PM_ButtonIconSize:
            return std::max(usual, QFontMetrics(QApplication::font()).height());
        default:
            return usual;
        }
    }

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
        QStyleHintReturn* result) const override
    {
        // Alt alone leads nowhere: it is held to take a server off the list, and while assistive
        // technology listens to the keys the toolkit takes the Alt of a mnemonic for Alt alone.
        if (hint == SH_MenuBar_AltKeyNavigation)
            return 0;
        return QProxyStyle::styleHint(hint, option, widget, result);
    }

private:
    /// The toolkit's arrow has one size, whatever the font.
    void drawPopUp(
        const QStyleOptionComplex& option, QPainter& painter, const QWidget* widget) const
    {
        QStyleOptionComboBox box(*qstyleoption_cast<const QStyleOptionComboBox*>(&option));
        box.subControls &= ~SC_ComboBoxArrow;
        QProxyStyle::drawComplexControl(CC_ComboBox, &box, &painter, widget);
        QStyleOption arrow(option);
        arrow.rect = subControlRect(CC_ComboBox, &option, SC_ComboBoxArrow, widget);
        drawArrow(arrow, painter, true);
    }
    static void drawArrow(const QStyleOption& option, QPainter& painter, bool down)
    {
        const double size = std::min<double>(
            QFontMetrics(QApplication::font()).ascent() * 0.4, option.rect.width() * 0.4);
        const auto middle = QRectF(option.rect).center();
        QPolygonF arrow({{-size, -size / 2}, {size, -size / 2}, {0, size / 2}});
        if (!down)
            arrow = QTransform().rotate(-90).map(arrow);
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(option.palette.buttonText());
        painter.drawPolygon(arrow.translated(middle));
        painter.restore();
    }
    static void drawRing(
        const QStyleOption& option, QPainter& painter, const QColor& color, double width)
    {
        const double inset = width / 2;
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(color, width));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(option.rect).adjusted(inset, inset, -inset, -inset), 2, 2);
        painter.restore();
    }
    static void drawFrame(const QStyleOption& option, QPainter& painter)
    {
        drawRing(option, painter, option.palette.shadow().color(), 1);
    }
    static void drawFocus(const QStyleOption& option, QPainter& painter)
    {
        drawRing(option, painter, option.palette.link().color(), 2);
    }
};

constexpr const char* usualPoints = "usualPoints";

} // namespace

void useOwnStyle()
{
    if (qEnvironmentVariableIsEmpty("QT_STYLE_OVERRIDE"))
        QApplication::setStyle(new FramedFusion);
}

void applyLook(const QtLook& look)
{
    // The first call finds the toolkit's own.
    static const QFont ownFont = QApplication::font();
    QFont font = ownFont;
    if (look.font) {
        font.setFamilies({QString::fromStdString(look.font->family)});
        font.setPointSizeF(look.font->points);
    }
    qApp->setProperty(usualPoints, look.font ? look.font->usualPoints : ownFont.pointSizeF());
    font.setPointSizeF(font.pointSizeF() * look.textScale);
    if (font != QApplication::font())
        QApplication::setFont(font);

    auto colors = look.highContrast ? (look.dark ? darkContrast : lightContrast)
                                    : (look.dark ? dark : light);
    if (look.accent && !look.highContrast)
        adoptAccent(colors, *look.accent);
    const auto palette = paletteOf(colors);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

double userPoints(double points)
{
    const double usual = qApp->property(usualPoints).toDouble();
    return usual > 0 ? points * QApplication::font().pointSizeF() / usual : points;
}

int userPixels(int pixels)
{
    return std::max(pixels, static_cast<int>(std::lround(userPoints(pixels))));
}

} // namespace zarn::linux_backend
