// SPDX-License-Identifier: MIT
#pragma once

#include "platform/application.h"
#include "platform/linux/ui/qt_main_queue.h"
#include "platform/linux/ui/qt_storyboard.h"

#include <functional>
#include <memory>
#include <string>

class QApplication;
class QMainWindow;
class QWidget;

namespace zarn::linux_backend {

/// The Qt application: event loop, menus, windows. Main thread only; one per process.
class QtApplication final : public Application {
public:
    /// `openLink` opens an address in the browser. `argc` and `argv` outlive the object.
    QtApplication(int& argc, char** argv, std::function<void(const std::string& address)> openLink);
    ~QtApplication() override;
    QtApplication(const QtApplication&) = delete;
    QtApplication& operator=(const QtApplication&) = delete;

    int run(ApplicationDelegate& delegate) override;
    void activateIgnoringOtherApps() override;
    void terminate() override;
    std::vector<Window*> windows() override;
    void performOnMainThread(std::function<void()> work) override;
    unsigned currentModifierFlags() const override;

    /// Activates the application for another start of the program. `token` is what the desktop gave
    /// that start to come to the front with, or empty.
    void activateForOtherStart(const std::string& token);
    bool isEnding() const { return m_ending; }
    /// The window that an alert belongs to, or nullptr when there is none.
    QWidget* windowInFront() const;
    Storyboards& storyboards() { return m_storyboards; }
    QtMainQueue& mainQueue() { return *m_mainQueue; }
    /// Called once, after the first window was painted.
    void setAfterFirstPaint(std::function<void()> work) { m_afterFirstPaint = std::move(work); }
    /// `work` is called once, when the user presses a first key or button of the mouse.
    void setAtFirstInput(std::function<void()> work);

private:
    void addMenus(QMainWindow& window);
    void addEditMenu(QMainWindow& window);
    void windowClosed();

    std::unique_ptr<QApplication> m_application;
    std::unique_ptr<QtMainQueue> m_mainQueue;
    QtStoryboard m_storyboard;
    QtStoryboards m_storyboards{m_storyboard};
    ApplicationDelegate* m_delegate = nullptr;
    std::function<void()> m_afterFirstPaint;
    bool m_ending = false;
};

} // namespace zarn::linux_backend
