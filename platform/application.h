// SPDX-License-Identifier: MIT
#pragma once

#include "platform/window.h"

#include <functional>
#include <string_view>
#include <vector>

namespace zarn {

/// Modifier flags of the event being handled.
inline constexpr unsigned modifierFlagOption = 524288;

/// Receives the application's events. Main thread only.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;
    virtual void applicationDidFinishLaunching() = 0;
    virtual void applicationWillTerminate() = 0;
    virtual bool applicationSupportsSecureRestorableState() = 0;
    virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;
    /// A menu command: "checkForUpdates", "showAbout" or "showLogFolder". False for any other.
    virtual bool performMenuAction(std::string_view action) = 0;
};

/// The running application. Main thread only, except where noted.
class Application {
public:
    virtual ~Application() = default;

    /// Shows the initial window of storyboard "Main", handles events until the application ends and
    /// returns the exit code of the process. Ends with terminate(), or with the last window when
    /// the delegate says so.
    virtual int run(ApplicationDelegate& delegate) = 0;
    virtual void activateIgnoringOtherApps() = 0;
    /// Ends the application: returns at once, and the event loop ends when control returns to it,
    /// whatever alert or sheet is open.
    virtual void terminate() = 0;
    /// The program's own windows, in their order.
    virtual std::vector<Window*> windows() = 0;
    /// Runs `work` on the main thread later, in the order of submission, never within this call;
    /// not at all once the application ends. Any thread.
    virtual void performOnMainThread(std::function<void()> work) = 0;
    /// Bits of the modifier keys held during the event being handled.
    virtual unsigned currentModifierFlags() const = 0;
};

} // namespace zarn
