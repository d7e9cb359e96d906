// SPDX-License-Identifier: MIT
#include "tests/contract/linux/qt_screen.h"

#include "platform/linux/ui/qt_widgets.h"
#include "tests/support/qt_environment.h"
#include "tests/support/window_manager_environment.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QToolButton>
#include <QWindow>

namespace zarn::linux_backend {

namespace {

const auto* const environment = testing::AddGlobalTestEnvironment(new WindowManagerEnvironment);

struct Owned {
    char name[14] = "contract_test";
    char* arguments[2] = {name, nullptr};
    int count = 1;
    QtApplication application{count, arguments, [](const std::string&) {}};
    QtAlertRunner alerts{application};
};

class OwningAlertFixture final : Owned, public QtAlertFixture {
public:
    OwningAlertFixture()
        : QtAlertFixture(alerts)
    {
    }
};

QString toQt(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString plainTitle(const QAction& action)
{
    return action.text().remove('&');
}

/// Whether a window waits for its first frame.
bool isComingUp(const QWidget* window)
{
    return window->isVisible() && window->windowHandle()
        && window->windowHandle()->findChild<QObject*>("firstFrame");
}

/// Does `work` when everything that is pending by now is done and every window is on the screen.
void later(std::function<void()> work)
{
    const auto doOrWait = [work = std::move(work)] {
        if (std::ranges::any_of(QApplication::topLevelWidgets(), isComingUp))
            later(work);
        else
            work();
    };
    QMetaObject::invokeMethod(
        qApp, [doOrWait] { QTimer::singleShot(1, qApp, doOrWait); }, Qt::QueuedConnection);
}

/// On a busy machine the display may take the focus for one that is not there yet; a user would
/// click on the only window that there is to click on.
void clickOnTheOnlyWindow()
{
    QWidgetList windows;
    for (auto* widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && qobject_cast<QMainWindow*>(widget))
            windows.append(widget);
    }
    if (auto* modal = QApplication::activeModalWidget())
        modal->activateWindow();
    else if (windows.size() == 1)
        windows.first()->activateWindow();
}

QPoint middleOf(QTextBrowser& view, int start, int length)
{
    QTextCursor cursor(view.document());
    cursor.setPosition(start + length / 2);
    return view.cursorRect(cursor).center();
}

} // namespace

// --- The event loop

int QtScreenFixture::run(ApplicationDelegate& delegate, std::vector<std::function<void()>> steps)
{
    m_steps = std::move(steps);
    m_isRunning = true;
    later([this] { doStep(0); });
    const int code = m_application.run(delegate);
    m_isRunning = false;
    return code;
}

void QtScreenFixture::doStep(std::size_t index)
{
    if (!m_isRunning)
        return;
    if (index == m_steps.size()) {
        ADD_FAILURE() << "the application runs on";
        m_application.terminate();
        return;
    }
    m_steps[index]();
    later([this, index] { doStep(index + 1); });
}

void QtScreenFixture::settle()
{
    bool isDone = false;
    later([&] { later([&] { isDone = true; }); });
    runEventsUntil([&] { return isDone; });
}

// --- Finding

QMainWindow* QtScreenFixture::front()
{
    QMainWindow* window = nullptr;
    const bool found = runEventsUntil([&] {
        if (!QApplication::activeWindow())
            clickOnTheOnlyWindow();
        window = qobject_cast<QMainWindow*>(QApplication::activeWindow());
        const auto* modal = QApplication::activeModalWidget();
        return window && (!modal || modal == window);
    });
    EXPECT_TRUE(found) << "no window has the keyboard";
    return found ? window : nullptr;
}

template <typename Widget> Widget* QtScreenFixture::find(std::string_view name)
{
    auto* window = front();
    auto* widget = window ? window->findChild<Widget*>(toQt(name)) : nullptr;
    EXPECT_NE(widget, nullptr) << name;
    return widget;
}

template <typename Widget> Widget* QtScreenFixture::usable(std::string_view name)
{
    auto* widget = find<Widget>(name);
    return widget && widget->isVisible() && widget->isEnabled() ? widget : nullptr;
}

// --- Doing

bool QtScreenFixture::click(std::string_view name)
{
    auto* button = find<QAbstractButton>(name);
    if (!button || !button->isVisible())
        return false;
    const bool lets = button->isEnabled();
    // Also where it must have no effect. A check box is hit where its mark is.
    const auto place = button->mapTo(button->window(), QPoint(8, button->height() / 2));
    QTest::mouseClick(button->window()->windowHandle(), Qt::LeftButton, {}, place);
    return lets;
}

bool QtScreenFixture::choose(std::string_view title, bool withOption)
{
    auto* popUp = usable<QComboBox>("selectServer_Button");
    const int row = popUp ? popUp->findText(toQt(title)) : -1;
    if (row < 0)
        return false;
    // A user is slower than the time in which the toolkit takes two clicks for one.
    QApplication::setDoubleClickInterval(0);
    const auto middle = popUp->mapTo(popUp->window(), popUp->rect().center());
    QTest::mouseClick(popUp->window()->windowHandle(), Qt::LeftButton, {}, middle);
    if (!runEventsUntil([&] { return popUp->view()->isVisible(); }))
        return false;
    auto* view = popUp->view();
    const auto place = view->visualRect(popUp->model()->index(row, popUp->modelColumn())).center();
    QTest::mouseMove(view->viewport(), place);
    QTest::mouseClick(
        view->viewport(), Qt::LeftButton, withOption ? Qt::AltModifier : Qt::NoModifier, place);
    return runEventsUntil([&] { return !popUp->view()->isVisible(); });
}

bool QtScreenFixture::moveFocus(std::string_view control)
{
    auto* widget = usable<QWidget>(control);
    if (!widget)
        return false;
    if (qobject_cast<QLineEdit*>(widget)) {
        QTest::mouseClick(widget, Qt::LeftButton);
        QTest::keyClick(widget, Qt::Key_End);
    } else {
        widget->setFocus(Qt::TabFocusReason);
    }
    return widget->hasFocus();
}

bool QtScreenFixture::lookIntoMenu()
{
    auto* window = front();
    const auto* focused = QApplication::focusWidget();
    QTest::keyClick(window->windowHandle(), Qt::Key_Z, Qt::AltModifier);
    if (!runEventsUntil([] { return QApplication::activePopupWidget() != nullptr; }))
        return false;
    while (auto* menu = QApplication::activePopupWidget())
        QTest::keyClick(menu, Qt::Key_Escape);
    if (QApplication::focusWidget() == window->menuBar())
        QTest::keyClick(window->menuBar(), Qt::Key_Escape);
    return runEventsUntil([&] { return QApplication::focusWidget() == focused; });
}

bool QtScreenFixture::chooseMenuItem(std::string_view title)
{
    for (auto* menu : front()->menuBar()->findChildren<QMenu*>()) {
        for (auto* action : menu->actions()) {
            if (plainTitle(*action) != toQt(title))
                continue;
            menu->popup({});
            QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
            return true;
        }
    }
    return false;
}

bool QtScreenFixture::switchToOtherProgram()
{
    front();
    m_otherProgram = std::make_unique<X11Windows>();
    const auto window = m_otherProgram->make(X11Windows::Managed::Yes);
    m_otherProgram->show(window);
    m_otherProgram->takeFocus(window);
    return runEventsUntil([] { return QApplication::activeWindow() == nullptr; });
}

bool QtScreenFixture::comeBack()
{
    m_otherProgram.reset();
    for (auto* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && qobject_cast<QMainWindow*>(window))
            window->activateWindow();
    }
    return front() != nullptr;
}

bool QtScreenFixture::closeWindow(std::string_view title)
{
    front();
    for (auto* widget : QApplication::topLevelWidgets()) {
        const QPointer<QWidget> window = qobject_cast<QMainWindow*>(widget);
        if (!window || !window->isVisible() || window->windowTitle() != toQt(title))
            continue;
        window->windowHandle()->close();
        return !window || !window->isVisible();
    }
    return false;
}

bool QtScreenFixture::clickLink(std::string_view textView, std::string_view text)
{
    auto* view = usable<QTextBrowser>(textView);
    const auto start = view->toPlainText().indexOf(toQt(text));
    if (start < 0)
        return false;
    const auto before = m_openedLinks.size();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
        middleOf(*view, static_cast<int>(start), static_cast<int>(text.size())));
    return m_openedLinks.size() > before;
}

void QtScreenFixture::type(std::string_view text)
{
    auto* window = front();
    for (const char letter : text)
        QTest::keyClick(window->windowHandle(), letter);
}

void QtScreenFixture::pressReturn()
{
    QTest::keyClick(front()->windowHandle(), Qt::Key_Return);
}

void QtScreenFixture::pressSpace()
{
    QTest::keyClick(front()->windowHandle(), Qt::Key_Space);
}

// --- Seeing

bool QtScreenFixture::isShown(std::string_view control)
{
    const auto* widget = find<QWidget>(control);
    return widget && widget->isVisible();
}

std::string QtScreenFixture::shownText(std::string_view control)
{
    auto* widget = find<QWidget>(control);
    if (!widget)
        return "";
    if (const auto* field = qobject_cast<QLineEdit*>(widget))
        return field->displayText().toStdString();
    if (const auto* view = qobject_cast<QTextBrowser*>(widget))
        return view->toPlainText().toStdString();
    const bool isPopUp = qobject_cast<QComboBox*>(widget) != nullptr;
    return QAccessible::queryAccessibleInterface(widget)
        ->text(isPopUp ? QAccessible::Value : QAccessible::Name)
        .toStdString();
}

std::optional<ImageName> QtScreenFixture::shownImage(std::string_view control)
{
    auto* widget = find<QWidget>(control);
    if (const auto* button = qobject_cast<QToolButton*>(widget))
        return button->arrowType() == Qt::DownArrow ? ImageName::TouchBarGoDownTemplate
                                                    : ImageName::RightFacingTriangleTemplate;
    const auto* view = qobject_cast<QLabel*>(widget);
    return view && !view->pixmap(Qt::ReturnByValue).isNull() ? std::optional(ImageName::AppIcon)
                                                             : std::nullopt;
}

std::string QtScreenFixture::toolTip(std::string_view button)
{
    return find<QWidget>(button)->toolTip().toStdString();
}

bool QtScreenFixture::isInFront(std::string_view title)
{
    return runEventsUntil([&] {
        const auto* window = QApplication::activeWindow();
        if (!window)
            clickOnTheOnlyWindow();
        return window && window->windowTitle() == toQt(title);
    });
}

std::pair<int, int> QtScreenFixture::contentSize()
{
    settle();
    const auto size = front()->centralWidget()->size();
    return {size.width(), size.height()};
}

int QtScreenFixture::layerGrey()
{
    const auto picture = front()->centralWidget()->grab().toImage();
    const auto color = picture.pixelColor(2, 2);
    return color.red() == color.green() && color.green() == color.blue() ? color.red() : -1;
}

} // namespace zarn::linux_backend

namespace zarn {

std::unique_ptr<AlertFixture> makeAlertFixture()
{
    return std::make_unique<linux_backend::OwningAlertFixture>();
}

std::unique_ptr<ScreenFixture> makeScreenFixture()
{
    return std::make_unique<linux_backend::QtScreenFixture>();
}

} // namespace zarn
