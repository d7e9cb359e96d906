// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/queues/main_queue.h"
#include "platform/run_loop.h"

#include <deque>
#include <mutex>
#include <thread>

namespace zarn::linux_backend {

/// The main queue of a program without a window. SIGINT, SIGTERM, SIGHUP and SIGQUIT interrupt it
/// as long as it lives, instead of ending the process. One per process, made on the main thread.
class PollRunLoop final : public MainQueue, public RunLoop {
public:
    PollRunLoop();
    ~PollRunLoop() override;
    PollRunLoop(const PollRunLoop&) = delete;
    PollRunLoop& operator=(const PollRunLoop&) = delete;

    void post(std::function<void()> work) override;
    bool isMainThread() const override { return std::this_thread::get_id() == m_mainThread; }
    /// Ends early when the user interrupts; there is nothing to paint.
    bool waitWhilePainting(
        const std::function<bool()>& done, std::chrono::milliseconds limit) override;
    void wake() override;

    void performOnMainThread(std::function<void()> work) override { post(std::move(work)); }
    bool runUntil(const std::function<bool()>& done) override;
    void runSubmitted() override;
    bool isInterrupted() const override { return signalNumber() != 0; }

    /// Waits until the descriptor can be read; false when the user interrupts. Runs no work.
    bool waitForInput(int descriptor);
    /// The signal that interrupted, or 0.
    static int signalNumber();

private:
    std::function<void()> takeSubmitted();
    void sleep(std::chrono::milliseconds limit, int descriptor);

    const std::thread::id m_mainThread = std::this_thread::get_id();
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_submitted;
};

} // namespace zarn::linux_backend
