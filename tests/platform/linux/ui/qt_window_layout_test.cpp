// SPDX-License-Identifier: MIT
// Whatever the size of the desktop's font, its scale and its dots per inch (the environment sets
// the last two), nothing is cut and nothing overlaps, in any view and state of the whole
// application.
#include "platform/linux/ui/qt_window.h"

#include "app/zarn_actions_app.h"
#include "platform/linux/ui/qt_alert.h"
#include "platform/linux/ui/qt_appearance.h"
#include "platform/linux/ui/qt_application.h"
#include "platform/memory/memory_platform.h"
#include "tests/support/qt_environment.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <QToolButton>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace zarn::linux_backend {
namespace {

std::string nameOf(const QWidget& widget)
{
    return widget.metaObject()->className() + (" " + widget.objectName().toStdString());
}

bool isText(const QWidget& widget)
{
    return qobject_cast<const QLabel*>(&widget) || qobject_cast<const QAbstractButton*>(&widget)
        || qobject_cast<const QLineEdit*>(&widget) || qobject_cast<const QComboBox*>(&widget)
        || qobject_cast<const StatusLabel*>(&widget) || qobject_cast<const NoticeBrowser*>(&widget)
        || qobject_cast<const QProgressBar*>(&widget);
}

/// What a control needs to show all that it shows. The text of fields and of the pop-up button
/// scrolls or is elided; their height is needed all the same.
QSize neededBy(const QWidget& widget)
{
    if (const auto* label = qobject_cast<const QLabel*>(&widget); label && label->wordWrap())
        return {label->minimumSizeHint().width(), label->heightForWidth(label->width())};
    if (const auto* image = qobject_cast<const QLabel*>(&widget);
        qobject_cast<const QProgressBar*>(&widget) || (image && image->text().isEmpty()))
        return {1, 1};
    if (qobject_cast<const QLabel*>(&widget) || qobject_cast<const QAbstractButton*>(&widget))
        return widget.sizeHint();
    if (qobject_cast<const StatusLabel*>(&widget))
        return {1, widget.fontMetrics().height()};
    return {1, widget.minimumSizeHint().height()};
}

class Layout : public testing::TestWithParam<double> {
protected:
    Layout()
    {
        QtLook look;
        look.font = {"DejaVu Sans", GetParam(), 10};
        applyLook(look);
    }

    Services services()
    {
        const auto memory = m_memory.services();
        return {.alertRunner = m_alerts,
            .application = m_application,
            .bundle = memory.bundle,
            .clock = memory.clock,
            .console = memory.console,
            .dateFormatter = memory.dateFormatter,
            .notificationCenter = memory.notificationCenter,
            .fileManager = memory.fileManager,
            .keychain = memory.keychain,
            .serialQueues = memory.serialQueues,
            .settings = memory.settings,
            .storyboards = m_application.storyboards(),
            .textServices = memory.textServices,
            .urlSessions = memory.urlSessions,
            .windowList = memory.windowList,
            .workspace = memory.workspace};
    }
    memory::MemorySettingsDomain& domain(const char* name)
    {
        return *m_memory.settings.suite(name);
    }

    /// Runs the application; `use` is what a user does in its main window.
    void run(const std::function<void()>& use)
    {
        ZarnActionsApp app(services(),
            {"https://a.example", "publisher.example/feedback",
                "Example Software Licence Agreement", "https://a.example/b.pdf",
                "Example Software"});
        QTimer::singleShot(0, qApp, [&] {
            settle();
            use();
            m_application.terminate();
        });
        app.run();
        EXPECT_TRUE(app.finishKeychainWrites());
    }
    static void settle()
    {
        for (int i = 0; i < 20; ++i) {
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents();
        }
    }
    template <typename Widget> static Widget& shown(const char* name)
    {
        Widget* found = nullptr;
        runEventsUntil([&] {
            for (auto* window : QApplication::topLevelWidgets()) {
                for (auto* widget : window->findChildren<Widget*>(name)) {
                    if (widget->isVisible())
                        found = widget;
                }
            }
            return found != nullptr;
        });
        if (!found) {
            std::fprintf(stderr, "nothing shows %s\n", name);
            std::abort();
        }
        return *found;
    }
    static void press(const char* name) { shown<QAbstractButton>(name).click(); }
    static void fill(const char* name, const QString& text)
    {
        shown<QLineEdit>(name).setText(text);
    }
    static void menu(const QString& title)
    {
        for (auto* action : shown<QMenuBar>("").actions().first()->menu()->actions()) {
            if (action->text().remove('&') == title)
                action->trigger();
        }
        settle();
    }
    /// `open` brings an alert up, which is looked at and closed with its last button.
    void checkAlert(const char* state, const std::function<void()>& open)
    {
        bool isSeen = false;
        QTimer waiting;
        QObject::connect(&waiting, &QTimer::timeout, [&] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (!dialog || isSeen)
                return;
            isSeen = true;
            settle();
            check(state);
            dialog->findChildren<QPushButton*>().back()->click();
        });
        waiting.start(1);
        open();
        m_memory.urlSessions.deliverAll();
        settle();
        EXPECT_TRUE(isSeen) << state;
    }

    /// Every window that shows.
    void check(const char* state)
    {
        settle();
        for (const auto* window : QApplication::topLevelWidgets()) {
            if (!window->isVisible()
                || (!qobject_cast<const QMainWindow*>(window)
                    && !qobject_cast<const QDialog*>(window)))
                continue;
            SCOPED_TRACE(std::string(state) + ": " + nameOf(*window));
            ++m_checked;
            checkWindow(*window);
        }
    }

private:
    static void checkWindow(const QWidget& window)
    {
        const auto screen = window.screen()->availableSize();
        EXPECT_LE(window.width(), screen.width());
        EXPECT_LE(window.height(), screen.height());
        std::vector<const QWidget*> controls;
        for (const auto* widget : window.findChildren<QWidget*>()) {
            if (widget->window() == &window && widget->isVisible() && isText(*widget))
                controls.push_back(widget);
        }
        EXPECT_GE(controls.size(), 3U);
        for (const auto* control : controls)
            checkControl(window, *control, controls);
        for (const auto* bar : window.findChildren<QMenuBar*>())
            checkMenu(*bar);
    }
    static void checkControl(
        const QWidget& window, const QWidget& control, const std::vector<const QWidget*>& others)
    {
        const auto areaOf = [&](const QWidget& widget) {
            return QRect(widget.mapTo(&window, QPoint(0, 0)), widget.size());
        };
        const auto needed = neededBy(control);
        EXPECT_GE(control.width(), needed.width()) << nameOf(control);
        EXPECT_GE(control.height(), needed.height()) << nameOf(control);
        if (!isScrolled(control)) {
            EXPECT_TRUE(window.rect().contains(areaOf(control))) << nameOf(control);
        }
        for (const auto* other : others) {
            if (other < &control && !isScrolled(*other) && !isScrolled(control)) {
                EXPECT_FALSE(areaOf(*other).intersects(areaOf(control)))
                    << nameOf(control) << " and " << nameOf(*other);
            }
        }
        if (const auto* notice = qobject_cast<const NoticeBrowser*>(&control))
            checkNotice(window, *notice);
        if (qobject_cast<const QCheckBox*>(&control)) {
            const int mark = control.style()->pixelMetric(QStyle::PM_IndicatorHeight);
            EXPECT_GE(mark, QFontMetrics(control.font()).ascent());
        }
        const int letter = QFontMetrics(QApplication::font()).ascent();
        if (qobject_cast<const QToolButton*>(&control)
            || qobject_cast<const QProgressBar*>(&control)) {
            EXPECT_GE(control.height(), letter * 3 / 4);
        }
        const auto* label = qobject_cast<const QLabel*>(&control);
        if (label && !label->pixmap(Qt::ReturnByValue).isNull()) {
            EXPECT_GE(control.height(), 4 * letter);
        }
    }
    static bool isScrolled(const QWidget& control)
    {
        for (const auto* parent = control.parentWidget(); parent; parent = parent->parentWidget()) {
            if (qobject_cast<const QScrollArea*>(parent))
                return true;
        }
        return false;
    }
    /// It scrolls only where the screen leaves no more room.
    static void checkNotice(const QWidget& window, const NoticeBrowser& notice)
    {
        EXPECT_EQ(notice.horizontalScrollBar()->maximum(), 0);
        if (window.height() < window.screen()->availableSize().height() * 8 / 10) {
            EXPECT_EQ(notice.verticalScrollBar()->maximum(), 0);
        }
    }
    static void checkMenu(const QMenuBar& bar)
    {
        for (auto* action : bar.actions()) {
            const auto area = bar.actionGeometry(action);
            EXPECT_TRUE(bar.rect().contains(area)) << action->text().toStdString();
            const auto text = action->text().remove('&');
            EXPECT_GE(area.width(), bar.fontMetrics().horizontalAdvance(text));
            EXPECT_GE(area.height(), bar.fontMetrics().height());
        }
    }

    char m_name[12] = "layout_test";
    char* m_arguments[2] = {m_name, nullptr};
    int m_count = 1;
    QtApplication m_application{m_count, m_arguments, [](const std::string&) {}};
    QtAlertRunner m_alerts{m_application};

protected:
    memory::MemoryPlatform m_memory;
    int m_checked = 0;
};

TEST_P(Layout, HoldsFromTheTermsToARegisteredServer)
{
    run([&] {
        shown<QPushButton>("accept_Button");
        check("the terms");
        press("accept_Button");
        check("adding a server");
        press("useUsername_button");
        check("with username and password");
        fill("displayName_TextField", "Werk S\u00fcd");
        fill("zarnProServer_textfield", "https://server.of-a-rather-long-name.example:8443/");
        fill("zarnProUsername_textfield", "administrator");
        fill("zarnProPassword_textfield", "s3cret");
        m_memory.urlSessions.replyNothing();
        checkAlert("a failure", [] { press("updateServerInfo_Button"); });
        check("after the failure, with its cause");
        m_memory.urlSessions.reply(200, R"({"token":"t0k3n"})");
        m_memory.urlSessions.reply(200, R"({"version":"10.49.1-t1712"})");
        press("updateServerInfo_Button");
        check("while the server is asked");
        checkAlert("a success", [] {});
        check("a registered server");
    });
    EXPECT_GE(m_checked, 8);
}

TEST_P(Layout, HoldsForProfilesAboutAndAlerts)
{
    m_memory.settings.standard().values["agreedToTermsOfUse"] = true;
    const std::string longName(60, 'W');
    Value::Dictionary servers;
    for (const auto& name : {longName, std::string("Production")})
        servers[name]
            = Value::Dictionary{{"server", "https://zarn.example:8443"}, {"date", Date{}}};
    domain("group.R3V8N1P6WB.zarnie.SharedZPMA").values["serversDict"] = servers;
    domain("group.Q7X2M9K4TA.zarnactions").values["currentServer"] = longName;
    domain("group.Q7X2M9K4TA.zarnactions").values["username"] = "admin";
    domain("group.Q7X2M9K4TA.zarnactions").values["hideCreds"] = 1;
    run([&] {
        check("a profile");
        press("hideCreds_button");
        check("without its credentials");
        press("hideCreds_button");
        check("with them again");
        menu("About Zarn Actions");
        check("the About window");
        m_memory.urlSessions.reply(200, "<td>Current Version</td><td>99.0.0</td>");
        checkAlert("the offer of an update", [] { menu("Check for Updates\u2026"); });
    });
    EXPECT_GE(m_checked, 6);
}

INSTANTIATE_TEST_SUITE_P(Points, Layout, testing::Values(9.0, 12.0, 14.0, 18.0, 24.0));

} // namespace
} // namespace zarn::linux_backend
