// SPDX-License-Identifier: MIT
#pragma once

#include "platform/alert.h"
#include "platform/application.h"

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace zarn::memory {

/// A window that remembers. Records "front <title>".
class MemoryWindow final : public Window {
public:
    MemoryWindow(std::string title, std::vector<std::string>& events)
        : m_title(std::move(title))
        , m_events(events)
    {
    }
    std::string title() const override { return m_title; }
    void setTitleVisibility(TitleVisibility visibility) override { titleVisibility = visibility; }
    void setTitlebarAppearsTransparent(bool transparent) override
    {
        titlebarTransparent = transparent;
    }
    void setStyleMask(unsigned mask) override { masks.push_back(mask); }
    unsigned styleMask() const override { return masks.empty() ? 15 : masks.back(); }
    void setOpaque(bool value) override { opaque = value; }
    void setHidesOnDeactivate(bool hides) override { hidesOnDeactivate = hides; }
    void makeKeyAndOrderFront() override { m_events.push_back("front " + m_title); }

    TitleVisibility titleVisibility = TitleVisibility::Visible;
    bool titlebarTransparent = false;
    bool opaque = true;
    bool hidesOnDeactivate = true;
    /// Every mask that was set, in order.
    std::vector<unsigned> masks;

private:
    std::string m_title;
    std::vector<std::string>& m_events;
};

/// Records "activate" and "terminate". A run is what `whileRunning` does.
class MemoryApplication final : public Application {
public:
    explicit MemoryApplication(std::vector<std::string>& events)
        : m_events(events)
    {
    }
    int run(ApplicationDelegate& delegate) override
    {
        m_delegate = &delegate;
        delegate.applicationDidFinishLaunching();
        if (whileRunning)
            whileRunning();
        delegate.applicationWillTerminate();
        m_delegate = nullptr;
        return 0;
    }
    /// The user closed the last window.
    void lastWindowClosed()
    {
        if (m_delegate && m_delegate->applicationShouldTerminateAfterLastWindowClosed())
            terminate();
    }
    void activateIgnoringOtherApps() override { m_events.emplace_back("activate"); }
    void terminate() override
    {
        m_events.emplace_back("terminate");
        if (onTerminate)
            onTerminate();
    }
    std::vector<Window*> windows() override { return openWindows; }
    unsigned currentModifierFlags() const override { return modifierFlags; }

    /// In their order.
    std::vector<Window*> openWindows;
    unsigned modifierFlags = 0;
    std::function<void()> whileRunning;
    std::function<void()> onTerminate;

private:
    ApplicationDelegate* m_delegate = nullptr;
    std::vector<std::string>& m_events;
};

/// Answers alerts from a script; without one, with the first button. Records "alert
/// <header>|<message>".
class MemoryAlertRunner final : public AlertRunner {
public:
    explicit MemoryAlertRunner(std::vector<std::string>& events)
        : m_events(events)
    {
    }
    int runModal(const Alert& alert) override
    {
        m_events.push_back("alert " + alert.messageText + "|" + alert.informativeText);
        shown.push_back(alert);
        if (whileOpen)
            whileOpen();
        if (answers.empty())
            return alertFirstButtonReturn;
        const int answer = answers.front();
        answers.pop_front();
        return answer;
    }

    std::deque<int> answers;
    std::vector<Alert> shown;
    std::function<void()> whileOpen;

private:
    std::vector<std::string>& m_events;
};

} // namespace zarn::memory
