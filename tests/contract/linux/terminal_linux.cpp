// SPDX-License-Identifier: MIT
// What the suites of a terminal ask of the Linux backend.
#include "platform/linux/files/posix_terminal.h"
#include "platform/linux/queues/poll_run_loop.h"
#include "tests/contract/run_loop_contract.h"
#include "tests/contract/terminal_contract.h"
#include "tests/support/scratch_folder.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

namespace zarn {
namespace {

using namespace linux_backend;

class LinuxRunLoopFixture final : public RunLoopFixture {
public:
    RunLoop& runLoop() override { return m_loop; }
    void interrupt() override { std::raise(SIGINT); }

private:
    PollRunLoop m_loop;
};

/// The standard streams are files meanwhile.
class LinuxTerminalFixture final : public TerminalFixture {
public:
    LinuxTerminalFixture()
    {
        std::fflush(stdout);
        std::ofstream(path(STDIN_FILENO));
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            m_before[static_cast<std::size_t>(stream)] = ::fcntl(stream, F_DUPFD_CLOEXEC, 10);
            const int flags = stream == STDIN_FILENO ? O_RDONLY : O_WRONLY | O_CREAT;
            const int file = ::open(path(stream).c_str(), flags | O_CLOEXEC, 0600);
            ::dup2(file, stream);
            ::close(file);
        }
    }
    ~LinuxTerminalFixture() override
    {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::dup2(m_before[static_cast<std::size_t>(stream)], stream);
            ::close(m_before[static_cast<std::size_t>(stream)]);
        }
    }
    LinuxTerminalFixture(const LinuxTerminalFixture&) = delete;
    LinuxTerminalFixture& operator=(const LinuxTerminalFixture&) = delete;

    Terminal& terminal(const std::string& input) override
    {
        std::ofstream(path(STDIN_FILENO)) << input;
        return m_terminal;
    }
    std::string output() override { return contentsOf(STDOUT_FILENO); }
    std::string errors() override { return contentsOf(STDERR_FILENO); }

private:
    std::string path(int stream) const { return m_scratch.path() + "/" + std::to_string(stream); }
    std::string contentsOf(int stream) const
    {
        std::stringstream text;
        text << std::ifstream(path(stream)).rdbuf();
        return text.str();
    }

    const ScratchFolder m_scratch;
    std::array<int, 3> m_before{};
    PollRunLoop m_loop;
    PosixTerminal m_terminal{[this](int descriptor) { return m_loop.waitForInput(descriptor); }};
};

} // namespace

std::unique_ptr<RunLoopFixture> makeRunLoopFixture()
{
    return std::make_unique<LinuxRunLoopFixture>();
}

std::unique_ptr<TerminalFixture> makeTerminalFixture()
{
    return std::make_unique<LinuxTerminalFixture>();
}

} // namespace zarn
