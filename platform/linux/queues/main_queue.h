// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>

namespace zarn::linux_backend {

/// The way back to the main thread for the adapters that work elsewhere.
class MainQueue {
public:
    virtual ~MainQueue() = default;

    /// Runs `work` on the main thread later, in posting order, never within this call. Any thread.
    virtual void post(std::function<void()> work) = 0;
    virtual bool isMainThread() const = 0;
    /// Main thread only. Waits until `done` answers true, at most `limit`, while windows go on
    /// painting; user input and posted work are held back until the wait ends. `done` is asked
    /// after each wake() and at least every 20 ms. Answers what `done` last did.
    virtual bool waitWhilePainting(
        const std::function<bool()>& done, std::chrono::milliseconds limit)
        = 0;
    /// Makes a waiting main thread ask `done` at once. Any thread.
    virtual void wake() = 0;
};

} // namespace zarn::linux_backend
