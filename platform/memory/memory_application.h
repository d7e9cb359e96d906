// SPDX-License-Identifier: MIT
#pragma once

#include "platform/alert.h"
#include "platform/application.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zarn::memory {

/// A window that keeps what is set. Records "front <title>".
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

/// Records "activate" and "terminate". run() calls `whileRunning` in place of an event loop.
class MemoryApplication final : public Application {
public:
    /// The part of the storyboard that the application uses.
    struct Hooks {
        std::function<void()> showInitialWindow;
        std::function<std::vector<Window*>()> windows;
        std::function<void()> closeAll;
    };
    explicit MemoryApplication(std::vector<std::string>& events, Hooks hooks = {})
        : m_hooks(std::move(hooks))
        , m_events(events)
    {
    }
    int run(ApplicationDelegate& delegate) override;
    /// The user closed the last window.
    void lastWindowClosed()
    {
        if (m_delegate && m_delegate->applicationShouldTerminateAfterLastWindowClosed())
            terminate();
    }
    /// The user chooses a command of the program's own menu; false when no command has that title.
    [[nodiscard]] bool chooseMenuItem(std::string_view title);
    void activateIgnoringOtherApps() override { m_events.emplace_back("activate"); }
    void terminate() override
    {
        m_events.emplace_back("terminate");
        m_ending = true;
        if (onTerminate)
            onTerminate();
    }
    std::vector<Window*> windows() override;
    unsigned currentModifierFlags() const override { return modifierFlags; }
    void performOnMainThread(std::function<void()> work) override
    {
        const std::lock_guard lock(m_mutex);
        m_posted.push_back(std::move(work));
    }
    /// Control comes back to the event loop: runs what was submitted for the main thread.
    void runPosted()
    {
        for (auto work = takePosted(); work; work = takePosted())
            work();
    }
    bool isEnding() const { return m_ending; }

    /// The windows in their order; when empty, those of the storyboard.
    std::optional<std::vector<Window*>> openWindows;
    unsigned modifierFlags = 0;
    std::function<void()> whileRunning;
    std::function<void()> onTerminate;

private:
    std::function<void()> takePosted()
    {
        const std::lock_guard lock(m_mutex);
        if (m_posted.empty())
            return nullptr;
        auto work = std::move(m_posted.front());
        m_posted.pop_front();
        return work;
    }

    Hooks m_hooks;
    ApplicationDelegate* m_delegate = nullptr;
    bool m_ending = false;
    std::vector<std::string>& m_events;
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_posted;
};

/// Answers alerts as the user does while they are open (`whileOpen`), else from a script, else with
/// the first button. Records "alert <header>|<message>".
class MemoryAlertRunner final : public AlertRunner {
public:
    /// `isEnding`: the application was terminated, which ends an open alert.
    explicit MemoryAlertRunner(
        std::vector<std::string>& events, std::function<bool()> isEnding = [] { return false; })
        : m_isEnding(std::move(isEnding))
        , m_events(events)
    {
    }
    int runModal(const Alert& alert) override;

    /// The user presses a button of the open alert; false when it has no such button.
    bool press(std::string_view title);
    /// A key: "\r" for Return, else one character.
    bool pressKey(std::string_view key);
    /// Presses Esc, or closes the alert's window.
    void leave();
    bool isOpen() const { return !m_open.empty() && !m_open.back().response; }

    std::deque<int> answers;
    std::vector<Alert> shown;
    std::function<void()> whileOpen;

private:
    struct Open {
        const Alert& alert;
        std::optional<int> response;
    };
    bool respond(std::optional<std::size_t> button);

    // An alert may open another.
    std::vector<Open> m_open;
    std::function<bool()> m_isEnding;
    std::vector<std::string>& m_events;
};

} // namespace zarn::memory
