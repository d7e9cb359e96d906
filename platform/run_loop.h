// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace zarn {

/// The main thread of a program without a window. Main thread only, except where noted.
class RunLoop {
public:
    virtual ~RunLoop() = default;

    /// Runs `work` on the main thread later, in the order of submission, never within this call.
    /// Any thread.
    virtual void performOnMainThread(std::function<void()> work) = 0;
    /// Runs what was submitted, and waits for more, until `done` is true, which is asked first and
    /// after each piece of work. False when the user interrupts: no work begins after that.
    [[nodiscard]] virtual bool runUntil(const std::function<bool()>& done) = 0;
    /// Runs what was submitted so far, whether or not the user interrupted, and returns.
    virtual void runSubmitted() = 0;
    /// The user, or the system, has asked the program to end.
    virtual bool isInterrupted() const = 0;
};

} // namespace zarn
