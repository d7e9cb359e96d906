// SPDX-License-Identifier: MIT
#pragma once

#include "platform/memory/memory_platform.h"
#include "tests/contract/memory/memory_alerts.h"
#include "tests/contract/screen_contract.h"

namespace zarn {

/// The user of the screen in memory.
class MemoryScreenFixture final : public ScreenFixture {
public:
    Application& application() override { return m_platform.application; }
    Storyboards& storyboards() override { return m_platform.storyboards; }
    AlertFixture& alerts() override { return m_alerts; }
    int run(ApplicationDelegate& delegate, std::vector<std::function<void()>> steps) override;
    void settle() override { main().endDismissed(); }

    bool click(std::string_view button) override;
    bool choose(std::string_view title, bool withOption) override;
    bool moveFocus(std::string_view control) override;
    bool lookIntoMenu() override { return !main().windows().empty(); }
    bool chooseMenuItem(std::string_view title) override;
    bool switchToOtherProgram() override;
    bool comeBack() override;
    bool closeWindow(std::string_view title) override { return main().closeByUser(title); }
    bool clickLink(std::string_view textView, std::string_view text) override;
    void type(std::string_view text) override { front().typeKeys(text); }
    void pressReturn() override { front().pressReturn(); }

    bool isShown(std::string_view control) override;
    std::string shownText(std::string_view control) override;
    bool isInFront(std::string_view title) override;
    std::pair<int, int> contentSize() override;
    int layerGrey() override;
    std::vector<std::string> openedLinks() override { return m_openedLinks; }

private:
    memory::MemoryStoryboard& main() { return m_platform.storyboards.main; }
    memory::MemoryWindowController& front();

    memory::MemoryPlatform m_platform;
    MemoryAlertFixture m_alerts{m_platform.alertRunner};
    std::vector<std::string> m_openedLinks;
};

inline ScreenBackend memoryScreen()
{
    return {"memory", [] { return std::make_unique<MemoryScreenFixture>(); }};
}

} // namespace zarn
