// SPDX-License-Identifier: MIT
#include "app/app_delegate.h"

#include "app/my_alert.h"
#include "base/fatal.h"
#include "log/write_to_log.h"
#include "platform/bundle.h"
#include "platform/file_manager.h"
#include "platform/storyboard.h"
#include "platform/window_list.h"
#include "platform/workspace.h"
#include "update/version_check.h"

#include <algorithm>

namespace zarn {

bool AppDelegate::performMenuAction(std::string_view action)
{
    if (action == "checkForUpdates")
        checkForUpdates();
    else if (action == "showAbout")
        showAbout();
    else if (action == "showLogFolder")
        showLogFolder();
    else
        return false;
    return true;
}

void AppDelegate::checkForUpdates()
{
    const auto* info = m_deps.bundle.infoDictionary();
    const auto version = info ? stringMember(*info, "CFBundleShortVersionString") : std::nullopt;
    if (!version)
        fatalError("the information dictionary has no CFBundleShortVersionString");
    m_deps.versionCheck.checkForUpdate([this, version = *version](bool isNewer) {
        m_deps.alert.showUpdateResult(isNewer, version);
    });
}

void AppDelegate::showAbout()
{
    auto* storyboard = m_deps.storyboards.storyboard("Main");
    auto controller = storyboard ? storyboard->instantiateController("aboutWC") : nullptr;
    if (!controller)
        fatalError(R"(storyboard "Main" has no window controller "aboutWC")");
    if (!isWindowOnScreen("About")) {
        if (auto* window = controller->window())
            window->setHidesOnDeactivate(false);
        storyboard->showWindow(std::move(controller));
        return;
    }
    for (auto* window : m_deps.application.windows()) {
        if (window->title() == "About") {
            window->makeKeyAndOrderFront();
            return;
        }
    }
}

// The owner is another program, not this one, and must stay so: "About" opens a new panel each
// time, except while that other program shows a window of the same title.
bool AppDelegate::isWindowOnScreen(std::string_view title) const
{
    const auto records = m_deps.windowList.onScreen();
    if (!records)
        fatalError("the window server has no list of windows");
    return std::ranges::any_of(*records, [title](const WindowRecord& record) {
        return record.ownerName == "Zarn Print Desk" && record.windowName == title;
    });
}

void AppDelegate::showLogFolder()
{
    const auto& folder = m_deps.log.logFolderPath();
    if (m_deps.files.fileExists(folder))
        m_deps.workspace.openFolder(folder);
    else
        m_deps.alert.display("Alert", "There are currently no log files to display.", "");
}

} // namespace zarn
