// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/single_instance.h"

#include "platform/linux/files/durable_file.h"

#include <csignal>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

struct flock wholeFile()
{
    struct flock lock { };
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

} // namespace

SingleInstance::Outcome SingleInstance::claim(
    const std::string& path, std::chrono::milliseconds patience)
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
        if (isHeld && !isHolderEnding() && ::kill(lock.l_pid, SIGUSR1) == 0)
            return Outcome::RaisedOther;
        if (Clock::now() >= deadline)
            return Outcome::Failed;
        // The holder is going, or gone since the first look.
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

void SingleInstance::announceEnding() const
{
    [[maybe_unused]] const auto written = ::pwrite(m_file.get(), "ending\n", 7, 0);
}

bool SingleInstance::isHolderEnding() const
{
    char first = 0;
    return ::pread(m_file.get(), &first, 1, 0) == 1;
}

} // namespace zarn::linux_backend
