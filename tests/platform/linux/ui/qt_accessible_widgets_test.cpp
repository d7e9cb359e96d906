// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_accessible_widgets.h"

#include "tests/contract/linux/qt_alerts.h"
#include "tests/contract/screen_contract.h"

#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QMainWindow>
#include <QTest>
#include <QTextBrowser>

#include <algorithm>

namespace zarn::linux_backend {
namespace {

QAccessibleInterface& accessible(QObject& object)
{
    return *QAccessible::queryAccessibleInterface(&object);
}

/// The window of a form, by the form's name.
QWidget& window(const QString& name)
{
    const auto windows = QApplication::topLevelWidgets();
    return **std::ranges::find_if(windows, [&](const auto* widget) {
        return qobject_cast<const QMainWindow*>(widget) && widget->objectName() == name;
    });
}

class AccessibleWidgets : public ScreenContract {
protected:
    void SetUp() override { showInitialWindow(); }

    template <typename Widget = QWidget> Widget& widget(const QString& form, const QString& name)
    {
        return *window(form).findChild<Widget*>(name);
    }
    QAccessibleInterface& triangle()
    {
        return accessible(widget("LoginWindow", "hideCreds_button"));
    }
    QTextBrowser& showNotice()
    {
        probe("LoginVC").shownView().performSegue("termsOfUse");
        fixture->settle();
        probe("ToUVC")
            .outlets()
            .textView("termsOfUse_TextView")
            ->setAttributedText({{"See ", {"", 12}, TextColor::Black, std::nullopt},
                {"one page", {"", 12}, TextColor::Black, "https://one.example"},
                {" and\n", {"", 12}, TextColor::Black, std::nullopt},
                {"another", {"", 12}, TextColor::Black, "https://two.example"}});
        auto& notice = widget<QTextBrowser>("TermsWindow", "termsOfUse_TextView");
        notice.setFocus(Qt::TabFocusReason);
        fixture->settle();
        return notice;
    }
};

TEST_F(AccessibleWidgets, TheTriangleIsExpandedOrCollapsedAndPressed)
{
    auto& button = *outlets().button("hideCreds_button");
    button.setToolTip("hide username/password fields");
    button.setImage(ImageName::TouchBarGoDownTemplate);
    EXPECT_EQ(triangle().role(), QAccessible::Button);
    EXPECT_TRUE(triangle().state().expandable);
    EXPECT_TRUE(triangle().state().expanded);
    EXPECT_FALSE(triangle().state().collapsed);
    button.setImage(ImageName::RightFacingTriangleTemplate);
    EXPECT_FALSE(triangle().state().expanded);
    EXPECT_TRUE(triangle().state().collapsed);

    EXPECT_EQ(triangle().text(QAccessible::Name), "hide username/password fields");
    EXPECT_EQ(triangle().text(QAccessible::Description), "");

    auto& actions = *triangle().actionInterface();
    ASSERT_EQ(actions.actionNames().value(0), QAccessibleActionInterface::pressAction());
    EXPECT_EQ(actions.keyBindingsForAction(QAccessibleActionInterface::pressAction()),
        QStringList("Alt+H"));
    actions.doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(events(), std::vector<std::string>{"hideCreds_action"});
    button.setEnabled(false);
    EXPECT_EQ(actions.actionNames(), QStringList());
}

TEST_F(AccessibleWidgets, AWindowIsBusyWhileItsIndicatorTurns)
{
    auto& content = accessible(widget("LoginWindow", "loginView"));
    auto& indicator = *outlets().progressIndicator("spinner_PI");
    EXPECT_FALSE(content.state().busy);
    indicator.startAnimation();
    EXPECT_TRUE(content.state().busy);
    indicator.stopAnimation();
    EXPECT_FALSE(content.state().busy);
}

TEST_F(AccessibleWidgets, TheTermsGoByTheProgramsNameAndAreDescribedByTheirText)
{
    showNotice();
    auto& terms = window("TermsWindow");
    EXPECT_EQ(accessible(terms).text(QAccessible::Name), "Zarn Actions");
    EXPECT_EQ(accessible(terms).text(QAccessible::Description), "See one page and another");
    EXPECT_EQ(terms.windowHandle()->title(), "Zarn Actions");
    EXPECT_EQ(probe("ToUVC").shownView().window()->title(), "");
}

TEST_F(AccessibleWidgets, ANoticeHasItsLinksAsChildren)
{
    auto& notice = showNotice();
    auto& whole = accessible(notice);
    EXPECT_EQ(whole.role(), QAccessible::StaticText);
    ASSERT_EQ(whole.childCount(), 2);
    EXPECT_EQ(whole.child(2), nullptr);
    EXPECT_EQ(whole.child(-1), nullptr);
    for (int index = 0; index < 2; ++index) {
        auto& link = *whole.child(index);
        EXPECT_TRUE(link.isValid());
        EXPECT_EQ(link.role(), QAccessible::Link);
        EXPECT_EQ(link.text(QAccessible::Name), index == 0 ? "one page" : "another");
        EXPECT_EQ(link.parent(), &whole);
        EXPECT_EQ(whole.indexOfChild(&link), index);
        EXPECT_TRUE(whole.rect().contains(link.rect())) << index;
        const auto middle = link.rect().center();
        EXPECT_EQ(whole.childAt(middle.x(), middle.y()), &link);
        link.actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    }
    EXPECT_EQ(fixture->openedLinks(),
        (std::vector<std::string>{"https://one.example", "https://two.example"}));
}

TEST_F(AccessibleWidgets, TheLinkThatTabReachesHasTheFocus)
{
    auto& notice = showNotice();
    auto& whole = accessible(notice);
    EXPECT_TRUE(whole.state().focused);
    EXPECT_EQ(whole.focusChild(), &whole);
    for (int index = 0; index < 2; ++index) {
        QTest::keyClick(&notice, Qt::Key_Tab);
        EXPECT_FALSE(whole.state().focused);
        EXPECT_EQ(whole.focusChild(), whole.child(index)) << index;
        EXPECT_FALSE(whole.child(1 - index)->state().focused);
    }
    QTest::keyClick(&notice, Qt::Key_Tab);
    EXPECT_FALSE(whole.child(1)->state().focused);
}

TEST_F(AccessibleWidgets, ANoticeIsReadByItsCharacters)
{
    auto& notice = showNotice();
    auto& text = *accessible(notice).textInterface();
    EXPECT_EQ(text.characterCount(), notice.toPlainText().size());
    EXPECT_EQ(text.text(4, 12), "one page");
    EXPECT_EQ(text.selectionCount(), 0);
    text.addSelection(4, 7);
    int start = 0;
    int end = 0;
    ASSERT_EQ(text.selectionCount(), 1);
    text.selection(0, &start, &end);
    EXPECT_EQ(start, 4);
    EXPECT_EQ(end, 7);
    EXPECT_EQ(notice.textCursor().selectedText(), "one");
    text.setCursorPosition(5);
    EXPECT_EQ(text.cursorPosition(), 5);
    EXPECT_EQ(text.selectionCount(), 0);
    text.setCursorPosition(4711);
    EXPECT_EQ(text.cursorPosition(), text.characterCount());
    EXPECT_EQ(text.offsetAtPoint(text.characterRect(6).topLeft() + QPoint(1, 1)), 6);
}

TEST(AccessibleAlert, IsNotDescribedByItsName)
{
    const auto fixture = makeAlertFixture();
    for (const auto* header : {"", "Alert"}) {
        fixture->whenOpen([&] {
            auto& dialog = accessible(*openAlert());
            EXPECT_EQ(dialog.text(QAccessible::Name), *header ? header : "Gone");
            EXPECT_EQ(dialog.text(QAccessible::Description), *header ? "Gone" : "");
            fixture->press("OK");
        });
        fixture->runner().runModal({header, "Gone", AlertStyle::Warning, {{"OK", ""}}});
    }
}

} // namespace
} // namespace zarn::linux_backend
