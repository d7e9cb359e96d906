// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/process_signals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

// A signal handler reaches nothing but what is static. Written once, before any signal can come.
std::array<int, 2>& signalPipe()
{
    static std::array<int, 2> ends{-1, -1};
    return ends;
}

extern "C" void writeSignal(int number)
{
    const int saved = errno;
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const auto written = ::write(signalPipe()[1], &byte, 1);
    errno = saved;
}

} // namespace

void catchSignals()
{
    if (::pipe2(signalPipe().data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    struct sigaction action { };
    action.sa_handler = writeSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGUSR1})
        ::sigaction(number, &action, nullptr);
}

void setSignalHandlers(std::function<void()> terminate, std::function<void()> raise)
{
    auto* notifier
        = new QSocketNotifier(signalPipe()[0], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier,
        [terminate = std::move(terminate), raise = std::move(raise)] {
            unsigned char number = 0;
            while (::read(signalPipe()[0], &number, 1) == 1)
                number == SIGUSR1 ? raise() : terminate();
        });
}

} // namespace zarn::linux_backend
