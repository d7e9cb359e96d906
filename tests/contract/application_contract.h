// SPDX-License-Identifier: MIT
#pragma once

#include "tests/contract/screen_contract.h"

namespace zarn {

/// What every application has to do.
class ApplicationContract : public ScreenContract, protected ApplicationDelegate {
protected:
    /// Runs the application with this as its delegate.
    int runWith(std::vector<std::function<void()>> steps)
    {
        return fixture->run(*this, std::move(steps));
    }
    void showAbout();
    /// The response of an alert that is open when the application is terminated.
    int responseAtTheEnd(std::vector<AlertButton> buttons);
    void happens(const std::string& event) { events().push_back(event); }

    void applicationDidFinishLaunching() override { happens("launched"); }
    void applicationWillTerminate() override { happens("terminating"); }
    bool applicationSupportsSecureRestorableState() override { return true; }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return m_endsWithWindows; }
    bool performMenuAction(std::string_view action) override;

    bool m_endsWithWindows = true;
};

} // namespace zarn
