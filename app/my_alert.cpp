// SPDX-License-Identifier: MIT
#include "app/my_alert.h"

#include "platform/alert.h"
#include "platform/application.h"
#include "platform/workspace.h"

namespace zarn {

std::string MyAlert::display(
    std::string_view header, std::string_view message, std::string_view secondButtonTitle)
{
    m_deps.application.activateIgnoringOtherApps();
    Alert alert{std::string(header), std::string(message), AlertStyle::Warning, {{"OK", ""}}};
    if (!secondButtonTitle.empty()) {
        alert.buttons.push_back({std::string(secondButtonTitle), "v"});
        alert.buttons.front().keyEquivalent = "\r";
    }
    const int response = m_deps.runner.runModal(alert);
    return response == alertFirstButtonReturn ? "OK" : std::string(secondButtonTitle);
}

void MyAlert::showUpdateResult(bool updateAvailable, std::string_view currentVersion)
{
    // "A new versions": the message is fixed, slip included.
    Alert alert{"Running Zarn Actions: " + std::string(currentVersion),
        updateAvailable ? "A new versions is available." : "No updates are currently available.",
        AlertStyle::Informational, {}};
    if (!updateAvailable) {
        alert.buttons = {{"OK", ""}};
        m_deps.runner.runModal(alert);
        return;
    }
    alert.buttons = {{"View", ""}, {"Ignore", ""}};
    if (m_deps.runner.runModal(alert) != alertFirstButtonReturn)
        return;
    if (const auto url = Url::fromText(m_deps.updateCheckPageURL))
        m_deps.workspace.openUrl(*url);
}

} // namespace zarn
