// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_controls.h"

#include <QApplication>
#include <QCheckBox>
#include <QFocusEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QStyleOptionFrame>
#include <QToolButton>

namespace zarn::linux_backend {

namespace {
QString toQt(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// The "&" of a button, and of a label that names a field, marks the key that leads there with Alt:
// the first of those that the form lists for the control and that the title has.
QString toQtTitle(const QWidget& control, std::string_view text)
{
    auto title = toQt(text).replace('&', "&&");
    for (const auto letter : control.property("mnemonics").toString()) {
        if (const auto at = title.indexOf(letter); at >= 0)
            return title.insert(at, '&');
    }
    return title;
}
std::string fromQtTitle(QString text)
{
    for (qsizetype at = text.indexOf('&'); at >= 0; at = text.indexOf('&', at + 1))
        text.remove(at, 1);
    return text.toStdString();
}

/// Return presses a button as Space does.
class ReturnPresses final : public QObject {
public:
    explicit ReturnPresses(QAbstractButton& button)
        : QObject(&button)
        , m_button(button)
    {
        button.installEventFilter(this);
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::KeyPress)
            return QObject::eventFilter(watched, event);
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (key.key() != Qt::Key_Return && key.key() != Qt::Key_Enter)
            return QObject::eventFilter(watched, event);
        if (!key.isAutoRepeat())
            m_button.click();
        return true;
    }

private:
    QAbstractButton& m_button;
};
} // namespace

void QtLabel::setStringValue(std::string_view text)
{
    widget().setText(widget().buddy() ? toQtTitle(widget(), text) : toQt(text));
}
std::string QtLabel::stringValue() const
{
    return widget().buddy() ? fromQtTitle(widget().text()) : widget().text().toStdString();
}

void QtStatusLabel::setStringValue(std::string_view text)
{
    widget().setText(toQt(text));
}
std::string QtStatusLabel::stringValue() const
{
    return widget().text().toStdString();
}

QtTextField::QtTextField(QLineEdit* field)
    : QtControlOf(field)
{
    field->installEventFilter(this);
    connect(field, &QLineEdit::returnPressed, this, &QtTextField::endEditing);
    // The toolkit's signal for typed texts leaves out what assistive technology puts in.
    connect(field, &QLineEdit::textChanged, this, [this] {
        if (m_onChange && !m_settingFromCode)
            m_onChange();
    });
}

void QtTextField::setStringValue(std::string_view text)
{
    m_settingFromCode = true;
    widget().setText(toQt(text));
    m_settingFromCode = false;
    if (!widget().hasFocus())
        showStart();
}
std::string QtTextField::stringValue() const
{
    return widget().text().toStdString();
}
void QtTextField::setEditable(bool editable)
{
    widget().setReadOnly(!editable);
}
bool QtTextField::isEditable() const
{
    return !widget().isReadOnly();
}
void QtTextField::makeFirstResponder()
{
    m_takesFocusWhenShown = !widget().isVisible();
    widget().setFocus(Qt::OtherFocusReason);
}

// A field that cannot be edited takes the focus too, so that its text can be selected.
void QtTextField::endEditing()
{
    if (m_delegate && isEditable())
        m_delegate->controlTextDidEndEditing(this);
}

void QtTextField::showStart()
{
    widget().home(false);
}

bool QtTextField::isLongerThanField() const
{
    QStyleOptionFrame option;
    option.initFrom(&widget());
    option.lineWidth = widget().style()->pixelMetric(QStyle::PM_DefaultFrameWidth);
    const auto inside
        = widget().style()->subElementRect(QStyle::SE_LineEditContents, &option, &widget());
    constexpr int margins = 4; // The toolkit's own, left and right together.
    return widget().fontMetrics().horizontalAdvance(widget().text()) >= inside.width() - margins;
}

// The toolkit's own signal also comes when the window is deactivated, and not when the text is
// unchanged; the reason of the focus change tells the cases apart.
bool QtTextField::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show && m_takesFocusWhenShown) {
        m_takesFocusWhenShown = false;
        // Whatever the toolkit gave the focus to meanwhile was not edited.
        widget().setFocus(focusMovedByCode);
    } else if (event->type() == QEvent::FocusOut) {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        // The list of a pop-up button takes the focus without saying that it is a popup.
        const bool isForMenu = reason == Qt::MenuBarFocusReason
            || (reason == Qt::OtherFocusReason && QApplication::activePopupWidget());
        if (isForMenu) {
            // The toolkit's field would forget what is selected, and "Copy" would find nothing.
            QFocusEvent asForPopup(QEvent::FocusOut, Qt::PopupFocusReason);
            widget().event(&asForPopup);
            return true;
        }
        switch (reason) {
        case Qt::ActiveWindowFocusReason:
        case Qt::PopupFocusReason:
        case Qt::NoFocusReason:
            break;
        default:
            showStart();
            endEditing();
        }
    } else if (event->type() == QEvent::ToolTip && widget().echoMode() == QLineEdit::Normal
        && isLongerThanField()) {
        showWholeText(widget(), *static_cast<QHelpEvent*>(event), widget().text());
        return true;
    }
    return QObject::eventFilter(watched, event);
}

QtButton::QtButton(QAbstractButton* button, const ControlAction& action)
    : QtControlOf(button)
{
    // By a click it would end the editing of a field before it acts.
    button->setFocusPolicy(Qt::TabFocus);
    new ReturnPresses(*button);
    if (qobject_cast<QCheckBox*>(button)) {
        // An accessible toggle changes the box without a click.
        QObject::connect(button, &QAbstractButton::toggled, button, [this, action](bool) {
            if (!m_settingFromCode)
                action();
        });
        return;
    }
    QObject::connect(button, &QAbstractButton::clicked, button, [this, action](bool) {
        if (isDisclosure())
            m_state = m_state == 0 ? 1 : 0;
        action();
    });
}

bool QtButton::isDisclosure() const
{
    return qobject_cast<QToolButton*>(&widget()) != nullptr;
}
void QtButton::setTitle(std::string_view title)
{
    widget().setText(toQtTitle(widget(), title));
}
std::string QtButton::title() const
{
    return fromQtTitle(widget().text());
}

void QtButton::setState(int state)
{
    m_state = state;
    if (!widget().isCheckable())
        return;
    m_settingFromCode = true;
    widget().setChecked(state != 0);
    m_settingFromCode = false;
}

int QtButton::state() const
{
    return widget().isCheckable() ? (widget().isChecked() ? 1 : 0) : m_state;
}

void QtButton::setImage(ImageName image)
{
    if (auto* arrow = qobject_cast<QToolButton*>(&widget()))
        arrow->setArrowType(
            image == ImageName::TouchBarGoDownTemplate ? Qt::DownArrow : Qt::RightArrow);
}

void QtButton::setToolTip(std::string_view text)
{
    widget().setToolTip(toQt(text));
    widget().setAccessibleName(toQt(text));
}

QtProgressIndicator::QtProgressIndicator(QProgressBar* bar)
    : QtControlOf(bar)
{
    bar->hide();
}

void QtProgressIndicator::setHidden(bool hidden)
{
    m_hidden = hidden;
    widget().setVisible(m_animating && !m_hidden);
}

void QtProgressIndicator::startAnimation()
{
    m_animating = true;
    widget().setVisible(!m_hidden);
}

void QtProgressIndicator::stopAnimation()
{
    m_animating = false;
    widget().hide();
}

void QtImageView::setImage(ImageName)
{
    // The largest, since the view grows with the user's font.
    widget().setScaledContents(true);
    widget().setPixmap(QPixmap(":/icons/AppIcon@2x.png", "PNG"));
}

} // namespace zarn::linux_backend
