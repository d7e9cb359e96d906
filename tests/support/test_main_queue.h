// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/queues/main_queue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace zarn::linux_backend {

/// A main queue without a toolkit: the thread that made it is the main thread and runs posted work
/// inside runUntil.
class TestMainQueue final : public MainQueue {
public:
    void post(std::function<void()> work) override
    {
        const std::lock_guard lock(m_mutex);
        m_work.push_back(std::move(work));
        m_changed.notify_all();
    }

    bool isMainThread() const override { return std::this_thread::get_id() == m_mainThread; }

    bool waitWhilePainting(
        const std::function<bool()>& done, std::chrono::milliseconds limit) override
    {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        std::unique_lock lock(m_mutex);
        for (;;) {
            lock.unlock();
            const bool isDone = done();
            lock.lock();
            if (isDone || m_isStopped || std::chrono::steady_clock::now() >= deadline)
                return isDone;
            m_changed.wait_for(lock, std::chrono::milliseconds(20), [this] { return m_woken; });
            m_woken = false;
        }
    }

    void wake() override
    {
        const std::lock_guard lock(m_mutex);
        m_woken = true;
        m_changed.notify_all();
    }

    /// As the user's Esc does: ends the wait that is under way and those that begin later.
    void stopWaiting()
    {
        const std::lock_guard lock(m_mutex);
        m_isStopped = m_woken = true;
        m_changed.notify_all();
    }

    /// Runs posted work until `done` answers true, at most `limit`. Answers what `done` last did.
    bool runUntil(const std::function<bool()>& done,
        std::chrono::milliseconds limit = std::chrono::seconds(30))
    {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (!done()) {
            std::unique_lock lock(m_mutex);
            if (!m_changed.wait_until(lock, deadline, [this] { return !m_work.empty(); }))
                return done();
            const auto work = std::move(m_work.front());
            m_work.pop_front();
            lock.unlock();
            work();
        }
        return true;
    }

    /// Runs what is posted now, and nothing posted later.
    void runPosted()
    {
        std::deque<std::function<void()>> work;
        {
            const std::lock_guard lock(m_mutex);
            work.swap(m_work);
        }
        for (const auto& item : work)
            item();
    }

private:
    const std::thread::id m_mainThread = std::this_thread::get_id();
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_work;
    bool m_woken = false;
    bool m_isStopped = false;
};

} // namespace zarn::linux_backend
