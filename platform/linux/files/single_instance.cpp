// SPDX-License-Identifier: MIT
#include "platform/linux/files/single_instance.h"

#include "platform/linux/files/durable_file.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

/// What stands at the start of the lock file: the role of the process, and which one wrote it. A
/// token with a line break follows.
struct Head {
    char role = 0;
    std::int32_t process = 0;
};
constexpr off_t tokenPlace = sizeof(Head);
// Between taking the lock and writing its role a process needs no longer than this.
constexpr std::chrono::milliseconds roleDelay{500};
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
    return take(path, patience, {Role::Window, activationToken});
}

SingleInstance::Outcome SingleInstance::claimForCommand(
    const std::string& path, std::chrono::milliseconds patience)
{
    return take(path, patience, {Role::Command, {}});
}

SingleInstance::Outcome SingleInstance::take(
    const std::string& path, std::chrono::milliseconds patience, const Wish& wish)
{
    using Clock = std::chrono::steady_clock;
    if (!makePrivateFolder(folderOf(path)))
        return Outcome::Failed;
    m_file = Descriptor::open(path, O_RDWR | O_CREAT, 0600);
    if (!m_file.ok())
        return Outcome::Failed;
    const auto start = Clock::now();
    for (;;) {
        auto lock = wholeFile();
        if (::fcntl(m_file.get(), F_SETLK, &lock) == 0)
            return writeRole(wish.role) ? Outcome::First : Outcome::Failed;
        lock = wholeFile();
        if (::fcntl(m_file.get(), F_GETLK, &lock) != 0)
            return Outcome::Failed;
        const bool isHeld = lock.l_type != F_UNLCK;
        if (isHeld && lock.l_pid <= 0)
            return Outcome::Elsewhere;
        const auto role = isHeld ? roleOf(lock.l_pid) : Role::Ending;
        const bool isWindow
            = role == Role::Window || (role == Role::Unknown && Clock::now() - start >= roleDelay);
        if (isWindow && wish.role == Role::Command)
            return Outcome::WindowOpen;
        if (isWindow) {
            handOver(wish.activationToken);
            if (::kill(lock.l_pid, SIGUSR1) == 0)
                return Outcome::WindowOpen;
        }
        if (Clock::now() - start >= patience && role != Role::Unknown)
            return Outcome::Busy;
        // The holder is going, or gone since the first look.
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

void SingleInstance::announceEnding() const
{
    [[maybe_unused]] const bool isWritten = writeRole(Role::Ending);
}

bool SingleInstance::writeRole(Role role) const
{
    const Head head{static_cast<char>(role), ::getpid()};
    return ::pwrite(m_file.get(), &head, sizeof head, 0) == sizeof head
        && (role == Role::Ending || ::ftruncate(m_file.get(), tokenPlace) == 0);
}

SingleInstance::Role SingleInstance::roleOf(int holder) const
{
    Head head;
    if (::pread(m_file.get(), &head, sizeof head, 0) != sizeof head || head.process != holder)
        return Role::Unknown;
    return static_cast<Role>(head.role);
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
