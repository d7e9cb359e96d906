// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_password_masking.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

#include <deque>
#include <utility>

namespace {

/// Stands in for the toolkit's bridge to the registry: takes each key of a window, and delivers it
/// again, as its own event, when the registry answers.
class Bridge final : public QObject {
public:
    Bridge() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* target, QEvent* event) override
    {
        const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
        if (!isKey || !event->spontaneous())
            return false;
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (event->type() == QEvent::KeyPress)
            heard += key.key() == Qt::Key_Tab ? QString("[Tab]") : key.text();
        reported.append(QString::number(key.nativeVirtualKey()) + key.text());
        m_waiting.emplace_back(target,
            std::make_unique<QKeyEvent>(key.type(), key.key(), key.modifiers(),
                key.nativeScanCode(), key.nativeVirtualKey(), key.nativeModifiers(), key.text(),
                key.isAutoRepeat(), key.count()));
        if (!isSlow)
            answer();
        return true;
    }
    /// The registry lets every key through that it was asked about.
    void answer()
    {
        while (!m_waiting.empty()) {
            const auto [target, key] = std::move(m_waiting.front());
            m_waiting.pop_front();
            QCoreApplication::sendEvent(target, key.get());
        }
    }
    /// A screen reader takes the key that was asked about first for itself.
    void consume() { m_waiting.pop_front(); }

    bool isSlow = false;
    QString heard;
    QStringList reported;

private:
    std::deque<std::pair<QObject*, std::unique_ptr<QKeyEvent>>> m_waiting;
};

class PasswordMaskingApplicationTest : public testing::Test {
protected:
    PasswordMaskingApplicationTest()
    {
        auto* layout = new QHBoxLayout(&m_window);
        layout->addWidget(&open);
        layout->addWidget(&secret);
        secret.setEchoMode(QLineEdit::Password);
        m_window.show();
        m_window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_window));
    }

    void press(int key, const QString& text = {}, Qt::KeyboardModifiers modifiers = {})
    {
        send(QTest::Press, key, text, modifiers);
        send(QTest::Release, key, text, modifiers);
    }
    void send(QTest::KeyAction action, int key, const QString& text = {},
        Qt::KeyboardModifiers modifiers = {})
    {
        QTest::sendKeyEvent(action, m_window.windowHandle(), Qt::Key(key), text, modifiers);
    }
    void type(const QString& text)
    {
        for (const auto letter : text)
            press(letter.toUpper().unicode(), QString(letter));
    }

private:
    char m_name[14] = "discreet_test";
    char* m_values[2] = {m_name, nullptr};
    int m_count = 1;
    PasswordMaskingApplication m_application{m_count, m_values};
    QWidget m_window;

protected:
    QLineEdit open;
    QLineEdit secret;
    Bridge bridge;
};

TEST_F(PasswordMaskingApplicationTest, LettersOfAPasswordAreHeardAsAsterisks)
{
    secret.setFocus();
    type("pa s");
    EXPECT_EQ(secret.text(), "pa s");
    EXPECT_EQ(bridge.heard, "****");
    EXPECT_EQ(bridge.reported, QStringList(8, "42*"));
}

TEST_F(PasswordMaskingApplicationTest, LettersOfOtherFieldsAreHeardAsTheyAre)
{
    open.setFocus();
    type("jane");
    EXPECT_EQ(open.text(), "jane");
    EXPECT_EQ(bridge.heard, "jane");
}

TEST_F(PasswordMaskingApplicationTest, KeysKeepTheirOrderBesideASlowRegistry)
{
    bridge.isSlow = true;
    secret.setFocus();
    type("pax");
    press(Qt::Key_Backspace);
    type("ss");
    EXPECT_EQ(secret.text(), "");
    bridge.answer();
    EXPECT_EQ(secret.text(), "pass");
}

TEST_F(PasswordMaskingApplicationTest, AKeyThatAScreenReaderConsumesIsNotTyped)
{
    bridge.isSlow = true;
    secret.setFocus();
    send(QTest::Press, Qt::Key_A, "a");
    send(QTest::Press, Qt::Key_B, "b");
    bridge.consume();
    bridge.answer();
    EXPECT_EQ(secret.text(), "b");
}

TEST_F(PasswordMaskingApplicationTest, ALetterRightAfterTheTabThatLeadsToAPasswordIsHidden)
{
    bridge.isSlow = true;
    open.setFocus();
    type("j");
    press(Qt::Key_Tab);
    type("s");
    bridge.answer();
    EXPECT_EQ(secret.text(), "s");
    EXPECT_EQ(bridge.heard, "j[Tab]*");
    EXPECT_EQ(open.text(), "j");
}

TEST_F(PasswordMaskingApplicationTest, TheReleaseOfAHiddenKeyIsHiddenWhereverTheFocusIs)
{
    secret.setFocus();
    send(QTest::Press, Qt::Key_S, "s");
    open.setFocus();
    send(QTest::Release, Qt::Key_S, "s");
    EXPECT_EQ(bridge.reported, QStringList(2, "42*"));
}

TEST_F(PasswordMaskingApplicationTest, CommandsOfAScreenReaderAreHeardAsTheyAre)
{
    secret.setFocus();
    for (const auto command : {Qt::Key_Insert, Qt::Key_CapsLock}) {
        bridge.heard.clear();
        send(QTest::Press, command);
        press(Qt::Key_H, "h");
        send(QTest::Release, command);
        type("s");
        EXPECT_EQ(bridge.heard, "h*");
    }
    bridge.heard.clear();
    press(Qt::Key_1, "1", Qt::ControlModifier);
    EXPECT_EQ(bridge.heard, "1");
}

TEST_F(PasswordMaskingApplicationTest, ACommandKeyThatIsReleasedElsewhereHidesNothingLess)
{
    secret.setFocus();
    send(QTest::Press, Qt::Key_Insert);
    QWidget other;
    other.show();
    other.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&other));
    secret.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(secret.window()));
    secret.setFocus();
    type("s");
    EXPECT_EQ(bridge.heard, "*");
}

} // namespace
