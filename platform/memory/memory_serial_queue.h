// SPDX-License-Identifier: MIT
#pragma once

#include "platform/serial_queue.h"

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace zarn::memory {

/// A queue that runs its work when the test says so, on the thread of the test.
class MemorySerialQueue final : public SerialQueue {
public:
    explicit MemorySerialQueue(std::string label)
        : m_label(std::move(label))
    {
    }
    ~MemorySerialQueue() override { runAll(); }
    MemorySerialQueue(const MemorySerialQueue&) = delete;
    MemorySerialQueue& operator=(const MemorySerialQueue&) = delete;

    void async(std::function<void()> work) override
    {
        if (events)
            events->push_back("async " + m_label);
        m_work.push_back(std::move(work));
    }
    bool drain(std::chrono::milliseconds limit) override
    {
        if (busyFor > std::chrono::milliseconds(0)) {
            busyFor -= limit;
            return false;
        }
        runAll();
        return true;
    }
    const std::string& label() const override { return m_label; }

    /// How long drain() fails, in sum over its calls; it does not really wait.
    std::chrono::milliseconds busyFor{0};
    /// Where submitted work is recorded, if set.
    std::vector<std::string>* events = nullptr;
    std::size_t pending() const { return m_work.size(); }
    void runAll()
    {
        while (!m_work.empty()) {
            const auto work = std::move(m_work.front());
            m_work.pop_front();
            work();
        }
    }

private:
    std::string m_label;
    std::deque<std::function<void()>> m_work;
};

/// Makes queues and remembers them; a remembered queue is gone once its owner is.
class MemorySerialQueues final : public SerialQueues {
public:
    std::unique_ptr<SerialQueue> make(std::string_view label) override
    {
        auto queue = std::make_unique<MemorySerialQueue>(std::string(label));
        made.push_back(queue.get());
        return queue;
    }

    std::vector<MemorySerialQueue*> made;
};

} // namespace zarn::memory
