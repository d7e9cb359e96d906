// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/ui/qt_alert.h"
#include "platform/linux/ui/qt_application.h"
#include "tests/contract/linux/qt_alerts.h"
#include "tests/contract/screen_contract.h"
#include "tests/support/x11_windows.h"

#include <cstddef>

class QMainWindow;
class QWidget;

namespace zarn::linux_backend {

/// The user of the real windows.
class QtScreenFixture final : public ScreenFixture {
public:
    Application& application() override { return m_application; }
    Storyboards& storyboards() override { return m_application.storyboards(); }
    AlertFixture& alerts() override { return m_alertFixture; }
    int run(ApplicationDelegate& delegate, std::vector<std::function<void()>> steps) override;
    void settle() override;

    bool click(std::string_view button) override;
    bool choose(std::string_view title, bool withOption) override;
    bool moveFocus(std::string_view control) override;
    bool lookIntoMenu() override;
    bool chooseMenuItem(std::string_view title) override;
    bool switchToOtherProgram() override;
    bool comeBack() override;
    bool closeWindow(std::string_view title) override;
    bool clickLink(std::string_view textView, std::string_view text) override;
    void type(std::string_view text) override;
    void pressReturn() override;
    void pressSpace() override;

    bool isShown(std::string_view control) override;
    std::string shownText(std::string_view control) override;
    std::optional<ImageName> shownImage(std::string_view control) override;
    std::string toolTip(std::string_view button) override;
    bool isInFront(std::string_view title) override;
    std::pair<int, int> contentSize() override;
    int layerGrey() override;
    std::vector<std::string> openedLinks() override { return m_openedLinks; }

private:
    /// The window that has the keyboard; waits for it.
    QMainWindow* front();
    template <typename Widget> Widget* find(std::string_view name);
    /// The widget, where the user can get at it.
    template <typename Widget> Widget* usable(std::string_view name);
    void doStep(std::size_t index);

    char m_name[14] = "contract_test";
    char* m_values[2] = {m_name, nullptr};
    int m_count = 1;
    std::vector<std::string> m_openedLinks;
    /// Stays connected, so that the display gives the windows of the next test other numbers: a
    /// busy window manager would take them for these.
    X11Windows m_taken;
    QtApplication m_application{
        m_count, m_values, [this](const std::string& link) { m_openedLinks.push_back(link); }};
    QtAlertRunner m_alerts{m_application};
    QtAlertFixture m_alertFixture{m_alerts};
    std::unique_ptr<X11Windows> m_otherProgram;
    std::vector<std::function<void()>> m_steps;
    bool m_isRunning = false;
};

} // namespace zarn::linux_backend
