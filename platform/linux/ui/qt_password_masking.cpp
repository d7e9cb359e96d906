// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_password_masking.h"

#include <QAccessible>
#include <QLineEdit>

namespace {

constexpr char16_t mask = u'*';
/// Larger than the scan code of any key.
constexpr quint32 firstNumber = 0x10000;
/// Longer than the toolkit waits for the registry before it delivers a key.
constexpr qint64 registryLimitMs = 1000;

/// A key press or release that reveals nothing but its number, which takes the place of its scan
/// code. It stays spontaneous, as the toolkit passes on no other keys.
class HiddenKey final : public QKeyEvent {
public:
    HiddenKey(const QKeyEvent& key, quint32 number)
        : QKeyEvent(key)
    {
        m_text = mask;
        m_key = Qt::Key_Asterisk;
        m_scanCode = number;
        m_virtualKey = mask;
        m_nativeModifiers = 0;
        m_modState = Qt::NoModifier;
    }
};

bool hidesItsText(const QObject* object)
{
    const auto* field = qobject_cast<const QLineEdit*>(object);
    return field && field->echoMode() != QLineEdit::Normal;
}

QString masked(const QString& text)
{
    return {text.size(), mask};
}

void maskSecretText(QAccessibleEvent* event);

// The handler takes the place of the toolkit's own, which runs while none is installed.
void pass(QAccessibleEvent& event)
{
    QAccessible::installUpdateHandler(nullptr);
    QAccessible::updateAccessibility(&event);
    QAccessible::installUpdateHandler(maskSecretText);
}

template <typename Event, typename... Values>
void passTextChange(const QAccessibleTextCursorEvent& original, Values&&... values)
{
    Event event(original.object(), std::forward<Values>(values)...);
    event.setCursorPosition(original.cursorPosition());
    pass(event);
}

void maskSecretText(QAccessibleEvent* event)
{
    const auto type = hidesItsText(event->object()) ? event->type() : QAccessible::InvalidEvent;
    if (type == QAccessible::TextInserted) {
        const auto& change = static_cast<QAccessibleTextInsertEvent&>(*event);
        passTextChange<QAccessibleTextInsertEvent>(
            change, change.changePosition(), masked(change.textInserted()));
    } else if (type == QAccessible::TextRemoved) {
        const auto& change = static_cast<QAccessibleTextRemoveEvent&>(*event);
        passTextChange<QAccessibleTextRemoveEvent>(
            change, change.changePosition(), masked(change.textRemoved()));
    } else if (type == QAccessible::TextUpdated) {
        const auto& change = static_cast<QAccessibleTextUpdateEvent&>(*event);
        passTextChange<QAccessibleTextUpdateEvent>(change, change.changePosition(),
            masked(change.textRemoved()), masked(change.textInserted()));
    } else {
        pass(*event);
    }
}

bool isKey(const QEvent& event)
{
    return event.type() == QEvent::KeyPress || event.type() == QEvent::KeyRelease;
}

/// Screen readers take commands while one of these is held down.
bool isCommandKey(const QKeyEvent& key)
{
    return key.key() == Qt::Key_Insert || key.key() == Qt::Key_CapsLock;
}

bool isText(const QKeyEvent& key)
{
    const auto text = key.text();
    return !text.isEmpty() && !key.modifiers().testFlag(Qt::ControlModifier)
        && (text.front().isPrint() || text.front().category() == QChar::Other_Format);
}

} // namespace

PasswordMaskingApplication::PasswordMaskingApplication(int& argc, char** argv)
    : QApplication(argc, argv)
    , m_lastNumber(firstNumber)
{
    QAccessible::installUpdateHandler(maskSecretText);
}

PasswordMaskingApplication::~PasswordMaskingApplication()
{
    QAccessible::installUpdateHandler(nullptr);
}

bool PasswordMaskingApplication::notify(QObject* receiver, QEvent* event)
{
    if (event->type() == QEvent::FocusIn && receiver->isWidgetType())
        m_sinceTab.invalidate();
    else if (event->type() == QEvent::FocusOut && receiver->isWindowType())
        m_heldCommands.clear(); // The release goes to another window.
    if (!isKey(*event))
        return QApplication::notify(receiver, event);
    auto& key = static_cast<QKeyEvent&>(*event);
    if (key.nativeScanCode() > firstNumber && receiver->isWidgetType())
        return sendAsTyped(receiver, key);
    if (key.spontaneous() && receiver->isWindowType() && mustHide(key))
        return sendHidden(receiver, key);
    return QApplication::notify(receiver, event);
}

bool PasswordMaskingApplication::mustHide(const QKeyEvent& key)
{
    const auto code = key.nativeScanCode();
    if (key.type() == QEvent::KeyRelease) {
        m_heldCommands.erase(code);
        return m_heldHidden.erase(code) != 0;
    }
    if (isCommandKey(key))
        m_heldCommands.insert(code);
    else if (key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab)
        m_sinceTab.start();
    const bool hides = isTypedIntoSecretField(key);
    if (hides)
        m_heldHidden.insert(code);
    return hides;
}

// The registry is asked about each key before it is delivered, so that a Tab may still be on its
// way when the first letter of a password is typed.
bool PasswordMaskingApplication::isTypedIntoSecretField(const QKeyEvent& key) const
{
    const bool tabIsOnItsWay = m_sinceTab.isValid() && !m_sinceTab.hasExpired(registryLimitMs);
    return m_heldCommands.empty() && isText(key) && (tabIsOnItsWay || hidesItsText(focusWidget()));
}

// The toolkit asks the registry and delivers the key later, after those before it, or never when a
// screen reader consumes it. So the order of the keys is the toolkit's also here.
bool PasswordMaskingApplication::sendHidden(QObject* window, QKeyEvent& key)
{
    HiddenKey hidden(key, ++m_lastNumber);
    // Not spontaneous, or the toolkit would pass it on.
    auto typed = std::make_unique<QKeyEvent>(key.type(), key.key(), key.modifiers(),
        key.nativeScanCode(), key.nativeVirtualKey(), key.nativeModifiers(), key.text(),
        key.isAutoRepeat(), key.count());
    typed->setTimestamp(key.timestamp());
    m_hidden.emplace(m_lastNumber, std::move(typed));
    const bool result = QApplication::notify(window, &hidden);
    key.setAccepted(hidden.isAccepted());
    return result;
}

bool PasswordMaskingApplication::sendAsTyped(QObject* widget, QKeyEvent& hidden)
{
    const auto typed = m_hidden.find(hidden.nativeScanCode());
    if (typed == m_hidden.end())
        return true;
    const auto key = std::move(typed->second);
    // Those before it were consumed.
    m_hidden.erase(m_hidden.begin(), std::next(typed));
    const bool result = QApplication::notify(widget, key.get());
    hidden.setAccepted(key->isAccepted());
    return result;
}
