// SPDX-License-Identifier: MIT
#include "platform/linux/queues/thread_serial_queue.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace zarn::linux_backend {

struct ThreadSerialQueue::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> work;
    std::uint64_t submitted = 0;
    std::uint64_t finished = 0;
    bool stopping = false;
};

namespace {

/// Best effort. Not SCHED_IDLE: a busy machine may starve such a thread for longer than the queue
/// has at termination, and an accepted write would be lost.
void lowerPriority()
{
    const sched_param parameters{};
    ::sched_setscheduler(0, SCHED_BATCH, &parameters);
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), 10);
}

void nameThread(const std::string& label)
{
    // The kernel keeps 15 bytes; the end of a reverse domain name says more than its beginning.
    const auto tail = label.size() > 15 ? label.substr(label.size() - 15) : label;
    ::pthread_setname_np(::pthread_self(), tail.c_str());
}

} // namespace

ThreadSerialQueue::ThreadSerialQueue(std::string label, std::chrono::milliseconds drainLimit)
    : m_label(std::move(label))
    , m_drainLimit(drainLimit)
    , m_state(std::make_shared<State>())
    , m_thread([state = m_state, name = m_label] { run(state, name); })
{
}

ThreadSerialQueue::~ThreadSerialQueue()
{
    const bool drained = drain(m_drainLimit);
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->stopping = true;
        m_state->changed.notify_all();
    }
    if (drained)
        m_thread.join();
    else
        m_thread.detach();
}

void ThreadSerialQueue::async(std::function<void()> work)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->work.push_back(std::move(work));
    ++m_state->submitted;
    m_state->changed.notify_all();
}

bool ThreadSerialQueue::drain(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_state->mutex);
    const auto target = m_state->submitted;
    return m_state->changed.wait_for(lock, limit, [&] { return m_state->finished >= target; });
}

void ThreadSerialQueue::run(const std::shared_ptr<State>& state, const std::string& label)
{
    nameThread(label);
    lowerPriority();
    std::unique_lock lock(state->mutex);
    for (;;) {
        state->changed.wait(lock, [&] { return state->stopping || !state->work.empty(); });
        if (state->stopping)
            return;
        auto work = std::move(state->work.front());
        state->work.pop_front();
        lock.unlock();
        work();
        work = nullptr; // destroyed here, not under the lock
        lock.lock();
        ++state->finished;
        state->changed.notify_all();
    }
}

std::unique_ptr<SerialQueue> ThreadSerialQueues::make(std::string_view label)
{
    return std::make_unique<ThreadSerialQueue>(std::string(label));
}

} // namespace zarn::linux_backend
