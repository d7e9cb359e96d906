// SPDX-License-Identifier: MIT
#pragma once

#include "platform/serial_queue.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>

namespace zarn::linux_backend {

/// A serial queue on a thread of its own, at lower priority than the window's.
class ThreadSerialQueue final : public SerialQueue {
public:
    explicit ThreadSerialQueue(
        std::string label, std::chrono::milliseconds drainLimit = std::chrono::seconds(10));
    /// Drains within the limit. Afterwards work that is still running continues on its detached
    /// thread, and work that has not begun is dropped.
    ~ThreadSerialQueue() override;
    ThreadSerialQueue(const ThreadSerialQueue&) = delete;
    ThreadSerialQueue& operator=(const ThreadSerialQueue&) = delete;

    void async(std::function<void()> work) override;
    bool drain(std::chrono::milliseconds limit) override;
    const std::string& label() const override { return m_label; }

private:
    struct State;
    static void run(const std::shared_ptr<State>& state, const std::string& label);

    const std::string m_label;
    const std::chrono::milliseconds m_drainLimit;
    const std::shared_ptr<State> m_state;
    std::thread m_thread;
};

class ThreadSerialQueues final : public SerialQueues {
public:
    std::unique_ptr<SerialQueue> make(std::string_view label) override;
};

} // namespace zarn::linux_backend
