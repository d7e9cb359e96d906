// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>

namespace zarn::linux_backend {

/// How adapters on other threads return to the main thread.
class MainQueue {
public:
    virtual ~MainQueue() = default;

    /// Runs `work` on the main thread later, in posting order, never within this call. Any thread.
    virtual void post(std::function<void()> work) = 0;
    virtual bool isMainThread() const = 0;
    /// Main thread only. Waits until `done` returns true, at most `limit`, while windows are still
    /// painted; user input and posted work are held back until the wait ends. Calls `done` after
    /// each wake() and at least every 20 ms. Ends early when the user presses Esc or closes a
    /// window and when the program ends. Returns the last result of `done`.
    virtual bool waitWhilePainting(
        const std::function<bool()>& done, std::chrono::milliseconds limit)
        = 0;
    /// Makes a waiting main thread call `done` at once. Any thread.
    virtual void wake() = 0;
};

} // namespace zarn::linux_backend
