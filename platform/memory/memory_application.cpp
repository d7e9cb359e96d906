// SPDX-License-Identifier: MIT
#include "platform/memory/memory_application.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zarn::memory {

namespace {

std::optional<std::size_t> indexOf(
    const Alert& alert, const std::function<bool(const AlertButton&)>& isIt)
{
    const auto it = std::find_if(alert.buttons.begin(), alert.buttons.end(), isIt);
    if (it == alert.buttons.end())
        return std::nullopt;
    return static_cast<std::size_t>(it - alert.buttons.begin());
}

} // namespace

int MemoryApplication::run(ApplicationDelegate& delegate)
{
    if (m_ending)
        return 0;
    m_delegate = &delegate;
    delegate.applicationDidFinishLaunching();
    if (m_hooks.showInitialWindow)
        m_hooks.showInitialWindow();
    if (whileRunning && !m_ending)
        whileRunning();
    m_ending = true;
    delegate.applicationWillTerminate();
    m_delegate = nullptr;
    if (m_hooks.closeAll)
        m_hooks.closeAll();
    return 0;
}

bool MemoryApplication::chooseMenuItem(std::string_view title)
{
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 3> commands{{
        {"About Zarn Actions", "showAbout"},
        {"Check for Updates\u2026", "checkForUpdates"},
        {"Show Log Folder", "showLogFolder"},
    }};
    if (title == "Quit Zarn Actions") {
        terminate();
        return true;
    }
    for (const auto& [command, action] : commands) {
        if (command == title)
            return m_delegate && m_delegate->performMenuAction(action);
    }
    return false;
}

std::vector<Window*> MemoryApplication::windows()
{
    if (openWindows)
        return *openWindows;
    return m_hooks.windows ? m_hooks.windows() : std::vector<Window*>{};
}

int MemoryAlertRunner::runModal(const Alert& alert)
{
    m_events.push_back("alert " + alert.messageText + "|" + alert.informativeText);
    shown.push_back(alert);
    m_open.push_back({alert, std::nullopt});
    if (whileOpen)
        whileOpen();
    if (m_isEnding())
        leave();
    const auto response = m_open.back().response;
    m_open.pop_back();
    if (response)
        return *response;
    if (answers.empty())
        return alertFirstButtonReturn;
    const int answer = answers.front();
    answers.pop_front();
    return answer;
}

bool MemoryAlertRunner::respond(std::optional<std::size_t> button)
{
    if (!isOpen() || !button)
        return false;
    m_open.back().response = alertFirstButtonReturn + static_cast<int>(*button);
    return true;
}

bool MemoryAlertRunner::press(std::string_view title)
{
    return isOpen() && respond(indexOf(m_open.back().alert, [title](const AlertButton& button) {
        return button.title == title;
    }));
}

bool MemoryAlertRunner::pressKey(std::string_view key)
{
    if (!isOpen())
        return false;
    const auto claimed = indexOf(m_open.back().alert,
        [key](const AlertButton& button) { return button.keyEquivalent == key; });
    return respond(!claimed && key == "\r" ? 0 : claimed);
}

void MemoryAlertRunner::leave()
{
    if (!press("Cancel") && !press("Ignore"))
        respond(0);
}

} // namespace zarn::memory
