// SPDX-License-Identifier: MIT
#include "platform/linux/queues/poll_run_loop.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

constexpr std::chrono::milliseconds tick{20};
constexpr std::chrono::milliseconds forever{-1};
constexpr std::array<int, 4> interruptions{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

// A signal handler reaches nothing but what is static.
struct Signals {
    std::atomic<int> number = 0;
    std::atomic<int> alarm = -1;
};
static_assert(std::atomic<int>::is_always_lock_free);

Signals& signals()
{
    static Signals all;
    return all;
}

void ring()
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(signals().alarm, &one, sizeof one);
}

extern "C" void interrupt(int number)
{
    const int saved = errno;
    signals().number = number;
    ring();
    errno = saved;
}

void handle(void (*handler)(int))
{
    struct sigaction action { };
    action.sa_handler = handler;
    for (const int number : interruptions) {
        struct sigaction before { };
        ::sigaction(number, nullptr, &before);
        // Whoever started the program with one ignored, as nohup does, has it ignored.
        if (before.sa_handler != SIG_IGN)
            ::sigaction(number, &action, nullptr);
    }
}

} // namespace

PollRunLoop::PollRunLoop()
{
    signals().number = 0;
    signals().alarm = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    handle(interrupt);
}

PollRunLoop::~PollRunLoop()
{
    handle(SIG_DFL);
    ::close(signals().alarm.exchange(-1));
}

int PollRunLoop::signalNumber()
{
    return signals().number;
}

void PollRunLoop::post(std::function<void()> work)
{
    const std::lock_guard lock(m_mutex);
    m_submitted.push_back(std::move(work));
    ring();
}

void PollRunLoop::wake()
{
    ring();
}

std::function<void()> PollRunLoop::takeSubmitted()
{
    const std::lock_guard lock(m_mutex);
    if (m_submitted.empty())
        return nullptr;
    auto work = std::move(m_submitted.front());
    m_submitted.pop_front();
    return work;
}

void PollRunLoop::sleep(std::chrono::milliseconds limit, int descriptor)
{
    const int alarm = signals().alarm;
    std::array<pollfd, 2> watched{{{alarm, POLLIN, 0}, {descriptor, POLLIN, 0}}};
    const nfds_t count = descriptor < 0 ? 1 : 2;
    ::poll(watched.data(), count, static_cast<int>(limit.count()));
    std::uint64_t rings = 0;
    [[maybe_unused]] const auto taken = ::read(alarm, &rings, sizeof rings);
}

bool PollRunLoop::runUntil(const std::function<bool()>& done)
{
    while (!done()) {
        if (isInterrupted())
            return false;
        if (const auto work = takeSubmitted())
            work();
        else
            sleep(forever, -1);
    }
    return true;
}

void PollRunLoop::runSubmitted()
{
    while (const auto work = takeSubmitted())
        work();
}

bool PollRunLoop::waitWhilePainting(
    const std::function<bool()>& done, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    bool isDone = done();
    while (!isDone && !isInterrupted() && std::chrono::steady_clock::now() < deadline) {
        sleep(tick, -1);
        isDone = done();
    }
    return isDone;
}

bool PollRunLoop::waitForInput(int descriptor)
{
    while (!isInterrupted()) {
        pollfd input{descriptor, POLLIN, 0};
        if (::poll(&input, 1, 0) > 0)
            return true;
        sleep(forever, descriptor);
    }
    return false;
}

} // namespace zarn::linux_backend
