// SPDX-License-Identifier: MIT
// What the sanitizers assume in our programs; linked into each of them, because a test may start
// one with an environment of its own.

#ifdef __SANITIZE_ADDRESS__

#include <chrono>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <thread>

namespace {

/// Qt's own threads are asked to end, and take a moment longer than Qt waits for them. What they
/// still hold then would look like a leak. This goes last, before leaks are looked for.
struct LastThreads {
    ~LastThreads()
    {
        using namespace std::chrono_literals;
        const auto deadline = std::chrono::steady_clock::now() + 200ms;
        while (threads() > 1 && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(5ms);
    }

    static std::ptrdiff_t threads()
    {
        std::error_code error;
        const std::filesystem::directory_iterator tasks("/proc/self/task", error);
        return std::distance(tasks, {});
    }
};

__attribute__((init_priority(101))) const LastThreads lastThreads;

} // namespace

#endif

// Qt, GLib and the other libraries are not instrumented: much of what orders their threads cannot
// be seen, so that each of their accesses to memory of their own would look like a race. Only what
// our own code accesses is reported; what the libraries lock and unlock still counts as order.
extern "C" const char* __tsan_default_options()
{
    return "ignore_noninstrumented_modules=1";
}

// What a test reads from standard error is what the program said: no table of suppressions.
extern "C" const char* __lsan_default_options()
{
    return "print_suppressions=0";
}

// Qt 6.4 does not release what its D-Bus thread was given when a process ends; a program that does
// nothing but show an empty combo box leaks the same. A leak of our own is still reported:
// what is hidden is only what Qt itself allocates, inside QObject's constructor and for D-Bus, and
// what the D-Bus library below it does, which nothing of ours calls.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libQt6DBus.so\nleak:libdbus-1.so\nleak:^QObject::QObject\n";
}

extern "C" const char* __ubsan_default_options()
{
    return "print_stacktrace=1";
}
