// SPDX-License-Identifier: MIT
#pragma once

#include "api/alert_display.h"

#include <string>
#include <string_view>

namespace zarn {

class AlertRunner;
class Application;
class Workspace;

/// All modal messages of the program. Main thread only.
class MyAlert final : public AlertDisplay {
public:
    struct Deps {
        AlertRunner& runner;
        Application& application;
        Workspace& workspace;
        std::string updateCheckPageURL;
    };
    explicit MyAlert(Deps deps)
        : m_deps(std::move(deps))
    {
    }

    std::string display(std::string_view header, std::string_view message,
        std::string_view secondButtonTitle) override;
    /// Shows the result of an update check; "View" opens the page in the browser.
    void showUpdateResult(bool updateAvailable, std::string_view currentVersion);

private:
    Deps m_deps;
};

} // namespace zarn
