// SPDX-License-Identifier: MIT
#include "platform/linux/ui/kept_focus.h"

#include "tests/support/shown_widgets.h"

#include <QLineEdit>

#include <vector>

namespace zarn::linux_backend {
namespace {

/// Four fields in a row that report why they lost the focus.
class KeptFocusTest : public WidgetsTest {
protected:
    class Field : public QLineEdit {
    public:
        std::vector<Qt::FocusReason> left;

    protected:
        void focusOutEvent(QFocusEvent* event) override
        {
            left.push_back(event->reason());
            QLineEdit::focusOutEvent(event);
        }
    };
    KeptFocusTest()
    {
        for (auto* field : {&first, &second, &third, &fourth})
            add(*field);
        show();
        second.setFocus(Qt::TabFocusReason);
    }
    static void settle() { QCoreApplication::processEvents(); }

    Field first, second, third, fourth;
    KeptFocus secondFocus{second};
    KeptFocus thirdFocus{third};
};

TEST_F(KeptFocusTest, WhatIsHiddenHandsTheFocusToTheNextControl)
{
    secondFocus.handOn();
    second.hide();
    settle();
    EXPECT_TRUE(third.hasFocus());
    EXPECT_EQ(second.left, std::vector{focusMovedByCode});
}

TEST_F(KeptFocusTest, TheKeyboardIsNotTakenFromAnotherWindow)
{
    {
        QLineEdit alert;
        alert.show();
        alert.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&alert));
        secondFocus.handOn();
        second.hide();
        settle();
        EXPECT_EQ(second.window()->focusWidget(), second.window());
        EXPECT_EQ(QApplication::activeWindow(), &alert);
    }
    second.window()->activateWindow();
    EXPECT_TRUE(QTest::qWaitFor([&] { return third.hasFocus(); }));
}

TEST_F(KeptFocusTest, TheNextControlIsOneThatTabWouldGoTo)
{
    third.setFocusPolicy(Qt::ClickFocus);
    fourth.setEnabled(false);
    secondFocus.handOn();
    second.hide();
    settle();
    EXPECT_TRUE(first.hasFocus());
}

TEST_F(KeptFocusTest, ControlsThatAreHiddenTogetherHandItOnOnce)
{
    secondFocus.handOn();
    second.hide();
    thirdFocus.handOn();
    third.hide();
    settle();
    EXPECT_TRUE(fourth.hasFocus());
    EXPECT_EQ(third.left, std::vector<Qt::FocusReason>{});
    // Shown again in the same order.
    second.show();
    secondFocus.restore();
    third.show();
    thirdFocus.restore();
    EXPECT_TRUE(second.hasFocus());
    EXPECT_EQ(fourth.left, std::vector{focusMovedByCode});
}

TEST_F(KeptFocusTest, ParkedNothingHasTheFocusUntilItIsRestored)
{
    secondFocus.park();
    second.setEnabled(false);
    settle();
    EXPECT_EQ(second.window()->focusWidget(), second.window());
    secondFocus.restore();
    EXPECT_EQ(second.window()->focusWidget(), second.window());
    second.setEnabled(true);
    secondFocus.restore();
    EXPECT_TRUE(second.hasFocus());
}

TEST_F(KeptFocusTest, TheUserWhoHasMovedItKeepsIt)
{
    for (const bool isHandedOn : {false, true}) {
        second.setFocus(Qt::TabFocusReason);
        isHandedOn ? secondFocus.handOn() : secondFocus.park();
        second.setEnabled(false);
        settle();
        fourth.setFocus(Qt::TabFocusReason);
        second.setEnabled(true);
        secondFocus.restore();
        EXPECT_TRUE(fourth.hasFocus());
    }
}

TEST_F(KeptFocusTest, OneThatGaveItUpBeforeDoesNotTakeItFromAnother)
{
    secondFocus.park();
    second.hide();
    third.setFocus(Qt::TabFocusReason);
    thirdFocus.park();
    third.setEnabled(false);
    second.show();
    secondFocus.restore();
    EXPECT_FALSE(second.hasFocus());
    third.setEnabled(true);
    thirdFocus.restore();
    EXPECT_TRUE(third.hasFocus());
}

TEST_F(KeptFocusTest, OneWithoutTheFocusChangesNothing)
{
    thirdFocus.handOn();
    third.hide();
    settle();
    third.show();
    thirdFocus.restore();
    EXPECT_TRUE(second.hasFocus());
    EXPECT_EQ(second.left, std::vector<Qt::FocusReason>{});
}

} // namespace
} // namespace zarn::linux_backend
