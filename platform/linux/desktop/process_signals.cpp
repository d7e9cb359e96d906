// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/process_signals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
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

void hardenProcess()
{
    // Closed streams would give their numbers to files of ours.
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1 && ::open("/dev/null", O_RDWR) != descriptor)
            std::abort();
    }
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    ::umask(077);
    std::signal(SIGPIPE, SIG_IGN);
}

void forbidTracing()
{
    ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
}

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
