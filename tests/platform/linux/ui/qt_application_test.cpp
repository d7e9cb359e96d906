// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_application.h"

#include <QApplication>
#include <QCloseEvent>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

namespace zarn::linux_backend {
namespace {

class RecordingDelegate final : public ApplicationDelegate {
public:
    void applicationDidFinishLaunching() override { events.emplace_back("launched"); }
    void applicationWillTerminate() override { events.emplace_back("terminating"); }
    bool applicationSupportsSecureRestorableState() override { return true; }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    bool performMenuAction(std::string_view) override { return false; }

    std::vector<std::string> events;
};

/// Refuses to close, as the terms do.
class StubbornWindow final : public QWidget {
public:
    int asked = 0;

protected:
    void closeEvent(QCloseEvent* event) override
    {
        ++asked;
        event->ignore();
    }
};

TEST(SessionEndTest, TheEndOfTheSessionEndsTheProgramWhateverWindowRefusesToClose)
{
    char name[] = "session_end_test";
    char* arguments[] = {name, nullptr};
    int count = 1;
    QtApplication application(count, arguments, [](const std::string&) {});
    RecordingDelegate delegate;
    StubbornWindow window;
    window.show();
    QTimer::singleShot(0, qApp, [] {
        QEvent quit(QEvent::Quit);
        QCoreApplication::sendEvent(qApp, &quit);
    });
    bool isTooLate = false;
    QTimer::singleShot(10000, qApp, [&] {
        isTooLate = true;
        application.terminate();
    });
    EXPECT_EQ(application.run(delegate), 0);
    EXPECT_FALSE(isTooLate);
    EXPECT_EQ(delegate.events, (std::vector<std::string>{"launched", "terminating"}));
    EXPECT_EQ(window.asked, 0);
    EXPECT_TRUE(application.isEnding());
}

} // namespace
} // namespace zarn::linux_backend
