// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_widgets.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QRegularExpression>
#include <QStyleOptionComboBox>
#include <QToolTip>
#include <QWheelEvent>

void showWholeText(QWidget& widget, const QHelpEvent& request, const QString& text)
{
    // Addresses have no blanks at which lines could be broken.
    static const QRegularExpression mark("(\\W)", QRegularExpression::UseUnicodePropertiesOption);
    auto breakable = text;
    breakable.replace(mark, QStringLiteral("\\1\u200b"));
    QToolTip::showText(request.globalPos(), "<p>" + breakable.toHtmlEscaped() + "</p>", &widget);
}

void LayerView::setLayerColor(const QColor& color)
{
    m_layerColor = color;
    update();
}

void LayerView::paintEvent(QPaintEvent*)
{
    if (m_layerColor)
        QPainter(this).fillRect(rect(), *m_layerColor);
}

QVariant SecretField::inputMethodQuery(Qt::InputMethodQuery query) const
{
    switch (query) {
    case Qt::ImSurroundingText:
    case Qt::ImCurrentSelection:
    case Qt::ImTextBeforeCursor:
    case Qt::ImTextAfterCursor:
        return QString();
    default:
        return QLineEdit::inputMethodQuery(query);
    }
}

ServerPopUp::ServerPopUp(QWidget* parent)
    : QComboBox(parent)
{
    // The menu must not grow with the names in it; a fixed number of letters bounds the button.
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(12);
    setInsertPolicy(QComboBox::NoInsert);
    setMaxVisibleItems(20);
}

QSize ServerPopUp::sizeHint() const
{
    return QComboBox::sizeHint();
}

bool ServerPopUp::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QComboBox::event(event);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    if (option.currentText != currentText())
        showWholeText(*this, *static_cast<QHelpEvent*>(event), currentText());
    return true;
}

void ServerPopUp::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        showPopup();
        break;
    default:
        event->ignore();
    }
}

void ServerPopUp::wheelEvent(QWheelEvent* event)
{
    event->ignore();
}

void ServerPopUp::initStyleOption(QStyleOptionComboBox* option) const
{
    QComboBox::initStyleOption(option);
    const auto area
        = style()->subControlRect(QStyle::CC_ComboBox, option, QStyle::SC_ComboBoxEditField, this);
    option->currentText
        = option->fontMetrics.elidedText(option->currentText, Qt::ElideRight, area.width());
}

void NoticeBrowser::changeEvent(QEvent* event)
{
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::FontChange && fontChanged)
        fontChanged();
}

bool NoticeBrowser::focusNextPrevChild(bool next)
{
    const bool hasMoved = QTextBrowser::focusNextPrevChild(next);
    // To another link. The toolkit only says so when the focus goes to another widget.
    if (hasMoved && hasFocus() && QAccessible::isActive()) {
        if (auto* link = QAccessible::queryAccessibleInterface(this)->focusChild()) {
            QAccessibleEvent focused(link, QAccessible::Focus);
            QAccessible::updateAccessibility(&focused);
        }
    }
    return hasMoved;
}

NoticeBrowser::NoticeBrowser(QWidget* parent)
    : QTextBrowser(parent)
{
    setOpenLinks(false);
    setFrameShape(QFrame::NoFrame);
    setTextInteractionFlags(Qt::TextBrowserInteraction | Qt::TextSelectableByKeyboard);
    viewport()->setAutoFillBackground(false);
    connect(this, &QTextBrowser::anchorClicked, this, [this](const QUrl& address) {
        if (openLink)
            openLink(address.toString(QUrl::FullyEncoded));
    });
}
