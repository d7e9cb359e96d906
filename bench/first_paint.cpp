// SPDX-License-Identifier: MIT
// Start to first paint and idle memory of two programs, in turn, as the X server sees them.
//   bench-first-paint PAIRS OURS BASELINE
// OURS and BASELINE are command lines without quoting. Needs a display of its own.
#include "bench/interleaved.h"

#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

struct Measurement {
    double firstPaint = 0;
    double pssKiB = 0;
};

[[noreturn]] void stop(const std::string& reason)
{
    std::fprintf(stderr, "bench-first-paint: %s\n", reason.c_str());
    std::exit(2);
}

std::vector<std::string> words(const std::string& commandLine)
{
    std::istringstream stream(commandLine);
    std::vector<std::string> result;
    for (std::string word; stream >> word;)
        result.push_back(word);
    return result;
}

pid_t start(const std::vector<std::string>& command)
{
    const pid_t child = fork();
    if (child != 0)
        return child;
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const auto& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    // What each start says stands in the way of the table.
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    execv(arguments[0], arguments.data());
    _exit(127);
}

double pssKiB(pid_t process)
{
    std::ifstream rollup("/proc/" + std::to_string(process) + "/smaps_rollup");
    for (std::string line; std::getline(rollup, line);) {
        if (line.rfind("Pss:", 0) == 0)
            return std::stod(line.substr(4));
    }
    stop("cannot read the program's memory");
}

/// Watches every window of the display for its first drawing after it was mapped.
class Watcher {
public:
    Watcher()
        : m_connection(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(m_connection))
            stop("no display");
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &mask);
        const auto* extension = xcb_get_extension_data(m_connection, &xcb_damage_id);
        if (!extension || !extension->present)
            stop("the display does not tell what is drawn");
        m_damageEvent = static_cast<std::uint8_t>(extension->first_event + XCB_DAMAGE_NOTIFY);
        std::free(xcb_damage_query_version_reply(
            m_connection, xcb_damage_query_version(m_connection, 1, 1), nullptr));
        xcb_damage_create(m_connection, xcb_generate_id(m_connection), m_root,
            XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        xcb_flush(m_connection);
    }
    ~Watcher() { xcb_disconnect(m_connection); }
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    /// The moment at which at least a quarter of a newly mapped window was drawn.
    Clock::time_point firstPaint(Clock::time_point deadline)
    {
        std::optional<std::uint32_t> area;
        while (Clock::now() < deadline) {
            pollfd descriptor{xcb_get_file_descriptor(m_connection), POLLIN, 0};
            poll(&descriptor, 1, 100);
            while (const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event{
                xcb_poll_for_event(m_connection), &std::free}) {
                const auto type = static_cast<std::uint8_t>(event->response_type & 0x7fU);
                if (type == XCB_MAP_NOTIFY)
                    area = areaOf(reinterpret_cast<xcb_map_notify_event_t*>(event.get())->window);
                if (type != m_damageEvent || !area)
                    continue;
                const auto& drawn = reinterpret_cast<xcb_damage_notify_event_t*>(event.get())->area;
                if (std::uint32_t{drawn.width} * drawn.height * 4 >= *area)
                    return Clock::now();
            }
        }
        stop("nothing was painted in time");
    }

private:
    std::optional<std::uint32_t> areaOf(xcb_window_t window)
    {
        const std::unique_ptr<xcb_get_geometry_reply_t, decltype(&std::free)> geometry{
            xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr),
            &std::free};
        if (!geometry || geometry->width < 50)
            return std::nullopt;
        return std::uint32_t{geometry->width} * geometry->height;
    }

    xcb_connection_t* m_connection;
    xcb_window_t m_root = 0;
    std::uint8_t m_damageEvent = 0;
};

Measurement measure(const std::string& commandLine)
{
    Watcher watcher;
    const auto command = words(commandLine);
    const auto started = Clock::now();
    const pid_t process = start(command);
    Measurement result;
    result.firstPaint = std::chrono::duration<double>(
        watcher.firstPaint(started + std::chrono::seconds(20)) - started)
                            .count();
    usleep(1500000); // Idle: everything that starts after the first paint has settled.
    result.pssKiB = pssKiB(process);
    kill(process, SIGTERM);
    int status = 0;
    waitpid(process, &status, 0);
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4)
        stop("usage: bench-first-paint PAIRS OURS BASELINE");
    std::vector<double> ourMemory;
    std::vector<double> baselineMemory;
    const auto run = [](const char* command, std::vector<double>& memory) {
        const auto result = measure(command);
        memory.push_back(result.pssKiB);
        return result.firstPaint;
    };
    const auto paint = zarn::bench::interleave(
        std::atoi(argv[1]), [&] { return run(argv[2], ourMemory); },
        [&] { return run(argv[3], baselineMemory); });
    zarn::bench::Comparison memory{
        zarn::bench::median(ourMemory), zarn::bench::median(baselineMemory), 0};
    memory.ratio = memory.ours / memory.baseline;
    bool within = zarn::bench::report("start to first paint / empty form", paint, 1.25);
    within
        &= zarn::bench::report("idle memory (PSS) / empty form", memory, 1.35, "MiB", 1.0 / 1024);
    return within ? 0 : 1;
}
