// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/single_instance.h"

#include "platform/linux/files/durable_file.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

// What the lock file holds: this letter at its start while the holder is ending, and a token with a
// line break further on.
constexpr char ending = 'e';
constexpr off_t tokenPlace = 8;
constexpr std::size_t longestToken = 255;

bool isToken(std::string_view text)
{
    return !text.empty() && text.size() <= longestToken
        && std::ranges::all_of(text, [](char letter) { return letter > ' ' && letter < '\x7f'; });
}

struct flock wholeFile()
{
    struct flock lock { };
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

} // namespace

SingleInstance::Outcome SingleInstance::claim(
    const std::string& path, std::chrono::milliseconds patience, std::string_view activationToken)
{
    using Clock = std::chrono::steady_clock;
    if (!makePrivateFolder(folderOf(path)))
        return Outcome::Failed;
    m_file = Descriptor::open(path, O_RDWR | O_CREAT, 0600);
    if (!m_file.ok())
        return Outcome::Failed;
    for (const auto deadline = Clock::now() + patience;;) {
        auto lock = wholeFile();
        if (::fcntl(m_file.get(), F_SETLK, &lock) == 0)
            return ::ftruncate(m_file.get(), 0) == 0 ? Outcome::First : Outcome::Failed;
        lock = wholeFile();
        if (::fcntl(m_file.get(), F_GETLK, &lock) != 0)
            return Outcome::Failed;
        const bool isHeld = lock.l_type != F_UNLCK;
        if (isHeld && lock.l_pid <= 0)
            return Outcome::Elsewhere;
        if (isHeld && !isHolderEnding()) {
            handOver(activationToken);
            if (::kill(lock.l_pid, SIGUSR1) == 0)
                return Outcome::RaisedOther;
        }
        if (Clock::now() >= deadline)
            return Outcome::Failed;
        // The holder is going, or gone since the first look.
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

void SingleInstance::announceEnding() const
{
    [[maybe_unused]] const auto written = ::pwrite(m_file.get(), &ending, 1, 0);
}

bool SingleInstance::isHolderEnding() const
{
    char first = 0;
    return ::pread(m_file.get(), &first, 1, 0) == 1 && first == ending;
}

void SingleInstance::handOver(std::string_view activationToken) const
{
    if (!isToken(activationToken))
        return;
    const auto line = std::string(activationToken) + '\n';
    [[maybe_unused]] const auto written
        = ::pwrite(m_file.get(), line.data(), line.size(), tokenPlace);
}

std::string SingleInstance::takeActivationToken() const
{
    std::array<char, longestToken + 1> bytes{};
    const auto count = ::pread(m_file.get(), bytes.data(), bytes.size(), tokenPlace);
    [[maybe_unused]] const auto emptied = ::ftruncate(m_file.get(), tokenPlace);
    const std::string_view read(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    const auto token = read.substr(0, read.find('\n'));
    return token.size() < read.size() && isToken(token) ? std::string(token) : "";
}

} // namespace zarn::linux_backend
