// SPDX-License-Identifier: MIT
#pragma once

#include "app/zarn_actions_app.h"
#include "platform/memory/memory_platform.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace zarn {

inline ProductTexts testProductTexts()
{
    return {"https://publisher.example/releases", "publisher.example/feedback",
        "Example Licence Agreement", "https://publisher.example/agreement.pdf", "Example Software"};
}

/// The whole application on the in-memory platform: a fresh process for each test.
class AppTest : public testing::Test {
protected:
    /// The windows go before what their controllers use, as they do at the end of a run.
    ~AppTest() override { end(); }
    /// Starts it as the platform's loop does: the main window is loaded and shown.
    void start()
    {
        auto& storyboard = platform.storyboards.main;
        storyboard.setViewControllerFactory(
            [this](std::string_view customClass) { return app().makeViewController(customClass); });
        storyboard.showWindow(storyboard.instantiateInitialController());
    }
    ZarnActionsApp& app()
    {
        if (!m_app)
            m_app = std::make_unique<ZarnActionsApp>(platform.services(), texts);
        return *m_app;
    }
    /// Ends the process: whatever it stored stays in the platform.
    void end()
    {
        platform.storyboards.main.shown.clear();
        m_app.reset();
        platform.serialQueues.made.clear();
    }
    /// As an earlier run left it.
    void agreeToTerms() { standard().values["agreedToTermsOfUse"] = true; }
    void menu(std::string_view action)
    {
        EXPECT_TRUE(app().delegate().performMenuAction(action)) << action;
    }
    memory::MemoryWindowController& shownWindow(std::size_t index)
    {
        return *platform.storyboards.main.shown.at(index);
    }
    memory::MemoryWindowController& mainWindow() { return shownWindow(0); }
    std::vector<std::string>& events() { return platform.events; }
    memory::MemorySettingsDomain& standard() { return platform.settings.standard(); }

    ProductTexts texts = testProductTexts();
    memory::MemoryPlatform platform;

private:
    std::unique_ptr<ZarnActionsApp> m_app;
};

} // namespace zarn
