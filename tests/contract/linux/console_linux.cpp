// SPDX-License-Identifier: MIT
#include "platform/linux/files/posix_services.h"
#include "tests/contract/console_contract.h"
#include "tests/support/scratch_folder.h"

#include <cstdio>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

namespace zarn {
namespace {

/// Standard output is a file meanwhile.
class LinuxFixture final : public ConsoleFixture {
public:
    LinuxFixture()
        : m_path(m_scratch.path() + "/output")
    {
        std::fflush(stdout);
        m_before = ::dup(STDOUT_FILENO);
        const int file = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        ::dup2(file, STDOUT_FILENO);
        ::close(file);
    }
    ~LinuxFixture() override
    {
        std::fflush(stdout);
        ::dup2(m_before, STDOUT_FILENO);
        ::close(m_before);
    }
    LinuxFixture(const LinuxFixture&) = delete;
    LinuxFixture& operator=(const LinuxFixture&) = delete;

    Console& console() override { return m_console; }
    std::string written() override
    {
        std::stringstream text;
        text << std::ifstream(m_path).rdbuf();
        return text.str();
    }

private:
    const ScratchFolder m_scratch;
    std::string m_path;
    int m_before = -1;
    linux_backend::StandardOutput m_console;
};

INSTANTIATE_TEST_SUITE_P(Linux, ConsoleContract,
    testing::Values(ConsoleBackend{"linux", [] { return std::make_unique<LinuxFixture>(); }}));

} // namespace
} // namespace zarn
