// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace zarn {

/// Runs work one at a time in submission order, off the main thread, at background priority.
class SerialQueue {
public:
    virtual ~SerialQueue() = default;

    /// Any thread. Never runs `work` before it returns.
    virtual void async(std::function<void()> work) = 0;
    /// Waits until everything submitted so far has run, at most `limit`. False after a time-out.
    virtual bool drain(std::chrono::milliseconds limit) = 0;
    virtual const std::string& label() const = 0;
};

/// Makes serial queues. Any thread. A queue drains (at most 10 s) when it is destroyed.
class SerialQueues {
public:
    virtual ~SerialQueues() = default;
    virtual std::unique_ptr<SerialQueue> make(std::string_view label) = 0;
};

} // namespace zarn
