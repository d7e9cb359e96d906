// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_controls.h"

#include "tests/contract/screen_contract.h"
#include "tests/support/shown_widgets.h"

#include <QApplication>
#include <QClipboard>
#include <QMainWindow>
#include <QMenuBar>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <map>

namespace zarn::linux_backend {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double pasteLimitMs = 5000;
#else
constexpr double pasteLimitMs = 1000;
#endif

constexpr const char* textFields[] = {"displayName_TextField", "zarnProServer_textfield",
    "zarnProUsername_textfield", "zarnProPassword_textfield"};

/// What a person pastes into the real fields.
class TypedText : public ScreenContract {
protected:
    void SetUp() override
    {
        showInitialWindow();
        field("displayName_TextField").setHidden(false);
        field("zarnProServer_textfield").setEditable(true);
        fixture->settle();
    }
    void TearDown() override
    {
        std::printf("Typed text, %s: %d pastes, the slowest took %.0f ms\n",
            testing::UnitTest::GetInstance()->current_test_info()->name(), m_pastes, m_slowest);
        ScreenContract::TearDown();
    }
    /// In place of what the field held; the milliseconds that this process ran for it, however
    /// busy the machine is.
    double paste(const char* name, const QString& text)
    {
        field(name).setStringValue("");
        EXPECT_TRUE(fixture->moveFocus(name));
        QApplication::clipboard()->setText(text);
        const auto start = std::clock();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_V, Qt::ControlModifier);
        fixture->settle();
        const double took = static_cast<double>(std::clock() - start) * 1e3 / CLOCKS_PER_SEC;
        ++m_pastes;
        m_slowest = std::max(m_slowest, took);
        return took;
    }

private:
    int m_pastes = 0;
    double m_slowest = 0;
};

TEST_F(TypedText, EveryFieldHoldsExactlyWhatIsPasted)
{
    QString controls;
    for (char16_t letter = 0; letter < 0x20; ++letter)
        controls += QChar(letter);
    controls += QChar(0x7f);
    const QString texts[] = {"plain", " leading and trailing ", controls,
        QString::fromUtf8("a\0b", 3), "line\r\nbreak", "line\nbreak\n", "carriage\rreturn",
        QString::fromUtf8("\u202Eright to left \u05D0\u05D1\u0627\u0644\u202C"),
        QString::fromUtf8("\U0001F511\U0001F468\u200D\U0001F469\u200D\U0001F467 \u65E5\u672C"),
        QString::fromUtf8("e\u0301 combined"), "\"quotes\" and 'more'", "back\\slash\\",
        "<b>&amp;</b> %41 ${HOME} `id`", QString(32767, 'x')};
    int pasted = 0;
    for (const auto* name : textFields) {
        for (const auto& text : texts) {
            paste(name, text);
            EXPECT_EQ(field(name).stringValue(), text.toStdString()) << name;
            ++pasted;
        }
    }
    EXPECT_EQ(pasted, 4 * 14);
}

TEST_F(TypedText, TenMegabytesAreCutToWhatAFieldHoldsAtOnce)
{
    constexpr qsizetype held = 32767;
    const QString text(10'000'000, 'y');
    const auto emoji = QString::fromUtf8("\U0001F511").repeated(2'500'000);
    for (const auto* name : textFields) {
        EXPECT_LT(paste(name, text), pasteLimitMs) << name;
        EXPECT_EQ(field(name).stringValue(), std::string(held, 'y')) << name;
        // Half a character at the end becomes a question mark, so that the text stays UTF-8.
        EXPECT_LT(paste(name, emoji), pasteLimitMs) << name;
        const auto expected
            = QString::fromUtf8("\U0001F511").repeated(held / 2).toStdString() + "?";
        EXPECT_TRUE(field(name).stringValue() == expected)
            << name << " ends in " << field(name).stringValue().substr(expected.size() - 5);
    }
}

TEST_F(TypedText, APasswordIsNeitherShownNorCopied)
{
    QApplication::clipboard()->setText("before");
    paste("zarnProPassword_textfield", "s3cret");
    QApplication::clipboard()->setText("before");
    for (const auto key : {Qt::Key_C, Qt::Key_X}) {
        EXPECT_EQ(field("zarnProPassword_textfield").stringValue(), "s3cret");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(QApplication::focusWidget(), key, Qt::ControlModifier);
        EXPECT_EQ(QApplication::clipboard()->text(), "before");
    }
}

/// The letters that lead to the controls of the configuration view with Alt.
class Mnemonics : public ScreenContract {
protected:
    void SetUp() override { showInitialWindow(); }

    static QWidget& window()
    {
        const auto windows = QApplication::topLevelWidgets();
        return **std::ranges::find_if(windows, [](const auto* widget) {
            return qobject_cast<const QMainWindow*>(widget) && widget->isVisible();
        });
    }
    /// By letter what has it, in the state that the view is in.
    static std::multimap<QString, QString> letters()
    {
        std::multimap<QString, QString> found;
        const auto add = [&](const QKeySequence& key, const QString& name) {
            found.emplace(key.toString(), name);
        };
        for (const auto* label : window().findChildren<QLabel*>()) {
            if (label->isVisible())
                add(QKeySequence::mnemonic(label->text()), label->objectName());
        }
        for (const auto* button : window().findChildren<QAbstractButton*>()) {
            if (button->isVisible())
                add(button->shortcut(), button->objectName());
        }
        for (const auto* menu : window().findChild<QMenuBar*>()->actions())
            add(QKeySequence::mnemonic(menu->text()), menu->text());
        return found;
    }
};

TEST_F(Mnemonics, LeadToEveryControlWithoutACollisionInEveryState)
{
    int states = 0;
    for (const auto* server : {"Server:", "Display Name:"}) {
        for (const auto* account : {"Client ID:", "Username:"}) {
            for (const auto* secret : {"Client Secret:", "Password:"}) {
                for (const auto* end : {"Quit", "Cancel"}) {
                    for (const auto* done : {"Set", "Add"}) {
                        outlets().label("displayName_Label")->setStringValue(server);
                        outlets().label("username_label")->setStringValue(account);
                        outlets().label("password_label")->setStringValue(secret);
                        button("quit_Button").setTitle(end);
                        button("updateServerInfo_Button").setTitle(done);
                        const auto found = letters();
                        // Four labels, two check boxes, two buttons, the triangle and two menus.
                        EXPECT_EQ(found.size(), 11U);
                        for (const auto& [letter, name] : found) {
                            EXPECT_NE(letter, "") << name.toStdString();
                            EXPECT_EQ(found.count(letter), 1U)
                                << letter.toStdString() << " of " << name.toStdString() << ": "
                                << server << account << secret << end << done;
                        }
                        EXPECT_EQ(outlets().label("displayName_Label")->stringValue(), server);
                        EXPECT_EQ(button("quit_Button").title(), end);
                        ++states;
                    }
                }
            }
        }
    }
    EXPECT_EQ(states, 32);
}

/// A text field that is far shorter than its text, and another control.
class QtTextFieldTest : public WidgetsTest {
protected:
    QtTextFieldTest()
    {
        widget.setFixedSize(120, 30);
        add(widget);
        add(other);
        show();
        other.setFocus(Qt::TabFocusReason);
    }
    QImage picture() { return widget.grab().toImage(); }

    const std::string start = "https://server.of-a-rather-long-name.example:8443/";
    QLineEdit widget;
    QLineEdit other;
    QtTextField field{&widget};
};

TEST_F(QtTextFieldTest, ALongTextFromCodeIsShownFromItsStart)
{
    field.setStringValue(start + "first");
    const auto first = picture();
    field.setStringValue(start + "second");
    EXPECT_EQ(picture(), first);
    field.setStringValue("x" + start);
    EXPECT_NE(picture(), first);
}

TEST_F(QtTextFieldTest, ALongTextThatIsLeftIsShownFromItsStart)
{
    field.setStringValue(start + "first");
    const auto first = picture();
    widget.setFocus(Qt::TabFocusReason);
    widget.setText(QString::fromStdString(start + "second"));
    EXPECT_NE(picture(), first);
    other.setFocus(Qt::TabFocusReason);
    EXPECT_EQ(picture(), first);
}

TEST_F(QtTextFieldTest, TheCaretStaysWhereItIsWhileAMenuIsOpen)
{
    field.setStringValue(start);
    widget.setFocus(Qt::TabFocusReason);
    widget.setCursorPosition(7);
    other.setFocus(Qt::MenuBarFocusReason);
    widget.setFocus(Qt::MenuBarFocusReason);
    EXPECT_EQ(widget.cursorPosition(), 7);
}

TEST_F(QtTextFieldTest, TheWholeOfALongTextIsItsToolTip)
{
    field.setStringValue(start);
    EXPECT_EQ(toolTipOf(widget), QString::fromStdString(start));
    field.setStringValue(R"(<b>"x"</b> &amp; \1 )" + start);
    EXPECT_EQ(toolTipOf(widget), R"(<b>"x"</b> &amp; \1 )" + QString::fromStdString(start));
    EXPECT_EQ(widget.toolTip(), "");
}

TEST_F(QtTextFieldTest, ATextThatFitsHasNoToolTip)
{
    field.setStringValue("https://short");
    EXPECT_EQ(toolTipOf(widget), "");
    widget.setFixedWidth(1000);
    field.setStringValue(start);
    EXPECT_EQ(toolTipOf(widget), "");
    // To the pixel: what the toolkit gives a text, and one less.
    int width = 60;
    for (; width < 1000 && toolTipOf(widget) != ""; ++width)
        widget.setFixedWidth(width);
    const auto fromStart = picture();
    widget.end(false);
    EXPECT_EQ(picture(), fromStart);
    widget.setFixedWidth(width - 2);
    EXPECT_NE(toolTipOf(widget), "");
    widget.home(false);
    const auto cut = picture();
    widget.end(false);
    EXPECT_NE(picture(), cut);
}

TEST_F(QtTextFieldTest, APasswordHasNoToolTip)
{
    widget.setEchoMode(QLineEdit::Password);
    field.setStringValue(start);
    EXPECT_EQ(toolTipOf(widget), "");
}

} // namespace
} // namespace zarn::linux_backend
