// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_window.h"

#include "platform/linux/ui/qt_alert.h"
#include "tests/contract/linux/qt_screen.h"
#include "tests/support/qt_environment.h"

#include <QApplication>
#include <QMainWindow>
#include <QWindow>

namespace zarn::linux_backend {
namespace {

QWindow* shownWindow(const QString& title)
{
    for (auto* widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<QMainWindow*>(widget) && widget->isVisible()
            && widget->windowTitle() == title)
            return widget->windowHandle();
    }
    return nullptr;
}

/// Notes for each view whether its window was on the screen when it had appeared.
class WatchingController final : public ViewController {
public:
    explicit WatchingController(std::vector<bool>& wasOnScreen)
        : m_wasOnScreen(wasOnScreen)
    {
    }
    void connectOutlets(OutletSource&) override { }
    void viewDidAppear() override
    {
        const auto* window = shownWindow("Zarn Actions");
        m_wasOnScreen.push_back(window && window->isExposed());
    }
    bool performAction(std::string_view, Button*) override { return false; }
    View& shownView() const { return view(); }

private:
    std::vector<bool>& m_wasOnScreen;
};

class QtSceneTest : public testing::Test {
protected:
    QtSceneTest()
    {
        storyboard.setViewControllerFactory([this](std::string_view customClass) {
            auto made = std::make_unique<WatchingController>(wasOnScreen);
            (customClass == "LoginVC" ? login : terms) = made.get();
            return made;
        });
        storyboard.showWindow(storyboard.instantiateInitialController());
    }

    QtScreenFixture screen;
    Storyboard& storyboard = *screen.storyboards().storyboard("Main");
    std::vector<bool> wasOnScreen;
    WatchingController* login = nullptr;
    WatchingController* terms = nullptr;
};

TEST_F(QtSceneTest, AViewHasAppearedWhenItsWindowIsOnTheScreen)
{
    EXPECT_TRUE(wasOnScreen.empty());
    EXPECT_TRUE(runEventsUntil([&] { return !wasOnScreen.empty(); }));
    screen.settle();
    EXPECT_EQ(wasOnScreen, std::vector<bool>{true});
}

TEST_F(QtSceneTest, AViewThatIsDismissedBeforeNeverAppears)
{
    login->shownView().dismissViewController();
    screen.settle();
    EXPECT_TRUE(wasOnScreen.empty());
}

TEST_F(QtSceneTest, TheTermsLieOverTheOtherWindowButDoNotGoWithIt)
{
    screen.settle();
    login->shownView().performSegue("termsOfUse");
    screen.settle();
    auto* window = shownWindow("");
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->transientParent(), shownWindow("Zarn Actions"));
    login->shownView().dismissViewController();
    screen.settle();
    ASSERT_EQ(shownWindow("Zarn Actions"), nullptr);
    ASSERT_EQ(shownWindow(""), window);
    EXPECT_EQ(window->transientParent(), nullptr);
    terms->shownView().dismissViewController();
    screen.settle();
    EXPECT_EQ(shownWindow(""), nullptr);
}

TEST_F(QtSceneTest, AnAlertThatGoesWithItsWindowIsCancelled)
{
    screen.settle();
    screen.alerts().whenOpen([&] { login->shownView().dismissViewController(); });
    const Alert alert{"", "Remove it?", AlertStyle::Warning, {{"OK", ""}, {"Cancel", ""}}};
    EXPECT_EQ(screen.alerts().runner().runModal(alert), alertSecondButtonReturn);
}

} // namespace
} // namespace zarn::linux_backend
