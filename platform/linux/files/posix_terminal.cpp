// SPDX-License-Identifier: MIT
#include "platform/linux/files/posix_terminal.h"

#include "base/wipe.h"
#include "platform/linux/files/descriptor.h"
#include "platform/linux/files/durable_file.h"

#include <array>

#include <termios.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

constexpr std::size_t longestLine = std::size_t{1} << 16;
constexpr std::size_t longestFile = std::size_t{16} << 20;

bool writeAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const auto count = retrying([&] { return ::write(descriptor, text.data(), text.size()); });
        if (count <= 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// Nothing that is typed is shown while one of these lives. The keys that stop the process are off
/// too: a shell would show the rest once it goes on.
class Unseen {
public:
    explicit Unseen(Echo echo)
        : m_isActive(echo == Echo::Off && ::tcgetattr(STDIN_FILENO, &m_before) == 0)
    {
        if (!m_isActive)
            return;
        auto unseen = m_before;
        unseen.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        unseen.c_lflag |= static_cast<tcflag_t>(ECHONL);
        unseen.c_cc[VSUSP] = _POSIX_VDISABLE;
        // Drops what was typed before the prompt.
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &unseen);
    }
    ~Unseen()
    {
        if (m_isActive)
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before);
    }
    Unseen(const Unseen&) = delete;
    Unseen& operator=(const Unseen&) = delete;

private:
    termios m_before{};
    bool m_isActive;
};

} // namespace

bool PosixTerminal::isInputTerminal() const
{
    return ::isatty(STDIN_FILENO) == 1;
}

bool PosixTerminal::isOutputTerminal() const
{
    return ::isatty(STDOUT_FILENO) == 1;
}

bool PosixTerminal::isErrorTerminal() const
{
    return ::isatty(STDERR_FILENO) == 1;
}

std::optional<std::string> PosixTerminal::readLine(std::string_view prompt, Echo echo)
{
    if (!isInputTerminal())
        return readLine();
    const Unseen unseen(echo);
    writeAll(STDERR_FILENO, prompt);
    auto line = readLine();
    if (!line)
        writeAll(STDERR_FILENO, "\n");
    return line;
}

std::optional<std::string> PosixTerminal::readLine() const
{
    // No growing: a copy of a secret would stay where the shorter text was.
    Wiped<std::string> line;
    line.get().reserve(longestLine);
    char byte = 0;
    while (line.get().size() < longestLine) {
        if (!m_waitForInput(STDIN_FILENO))
            return std::nullopt;
        const auto count = retrying([&] { return ::read(STDIN_FILENO, &byte, 1); });
        if (count < 0 || (count == 0 && line.get().empty()))
            return std::nullopt;
        if (count == 0 || byte == '\n')
            return std::string(line.get());
        line.get() += byte;
    }
    return std::nullopt;
}

Result<std::string> PosixTerminal::readAll(const std::string& path)
{
    const auto file = path == "-" ? Descriptor() : Descriptor::openNamed(path);
    if (path != "-" && !file.ok())
        return failure("cannot open", path);
    const int descriptor = file.ok() ? file.get() : STDIN_FILENO;
    std::string bytes;
    std::array<char, 65536> block{};
    for (;;) {
        if (!m_waitForInput(descriptor))
            return Error{ErrorCode::Unavailable, "interrupted"};
        const auto count = retrying([&] { return ::read(descriptor, block.data(), block.size()); });
        if (count < 0)
            return failure("cannot read", path);
        if (count == 0)
            return bytes;
        bytes.append(block.data(), static_cast<std::size_t>(count));
        if (bytes.size() > longestFile)
            return Error{ErrorCode::TooLarge, path + " is larger than 16 MiB"};
    }
}

bool PosixTerminal::write(std::string_view text)
{
    return writeAll(STDOUT_FILENO, text);
}

void PosixTerminal::writeErrorLine(std::string_view line)
{
    writeAll(STDERR_FILENO, std::string(line) + "\n");
}

} // namespace zarn::linux_backend
