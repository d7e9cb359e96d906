// SPDX-License-Identifier: MIT
#include "platform/linux/files/file_lock.h"

#include "platform/linux/files/durable_file.h"

#include <cerrno>
#include <cstdint>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

using Deadline = std::chrono::steady_clock::time_point;

// The lock itself is `flock` on the whole file: any other program can take part with that alone.
// Our own processes line up for it, so that one that writes without a pause keeps nobody out. The
// line is made of locks on single bytes, which end with their process: the counter's byte is held
// while a place is taken, and every other one is a place, locked for as long as its owner waits for
// the lock or has it.
constexpr off_t counterByte = 0;
constexpr off_t firstPlace = 1;
constexpr std::uint64_t placeCount = std::uint64_t{1} << 62;

Error failure(const std::string& what, const std::string& path)
{
    return {ErrorCode::Io, what + " " + path + ": " + reasonOf(errno)};
}

struct flock bytes(off_t first, off_t last)
{
    struct flock range { };
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_start = first;
    range.l_len = last - first + 1;
    return range;
}

enum class Outcome { Done, Busy, Failed };

Outcome outcomeOf(int result)
{
    if (result == 0)
        return Outcome::Done;
    return errno == EWOULDBLOCK || errno == EACCES || errno == EINTR ? Outcome::Busy
                                                                     : Outcome::Failed;
}

template <typename Attempt> Outcome repeatWhileBusy(Deadline deadline, Attempt attempt)
{
    auto pause = std::chrono::microseconds(100);
    for (;;) {
        const auto outcome = attempt();
        if (outcome != Outcome::Busy || std::chrono::steady_clock::now() >= deadline)
            return outcome;
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, std::chrono::microseconds(1000));
    }
}

Outcome tryLockByte(int descriptor, off_t byte)
{
    auto range = bytes(byte, byte);
    return outcomeOf(::fcntl(descriptor, F_OFD_SETLK, &range));
}

void unlockByte(int descriptor, off_t byte)
{
    auto range = bytes(byte, byte);
    range.l_type = F_UNLCK;
    ::fcntl(descriptor, F_OFD_SETLK, &range);
}

// A counter that is lost or cannot be written gives a place twice; its owners then take turns.
off_t nextPlace(int descriptor)
{
    std::uint64_t counter = 0;
    if (::pread(descriptor, &counter, sizeof counter, 0) != sizeof counter)
        counter = 0;
    counter = (counter + 1) % placeCount;
    (void)!::pwrite(descriptor, &counter, sizeof counter, 0);
    return firstPlace + static_cast<off_t>(counter);
}

Outcome tryFront(int descriptor, off_t place)
{
    if (place == firstPlace)
        return Outcome::Done;
    auto ahead = bytes(firstPlace, place - 1);
    if (::fcntl(descriptor, F_OFD_GETLK, &ahead) != 0)
        return Outcome::Failed;
    return ahead.l_type == F_UNLCK ? Outcome::Done : Outcome::Busy;
}

/// Busy when it took too long; Failed on a file system that has no such locks.
Outcome waitInLine(int descriptor, Deadline deadline)
{
    auto outcome = repeatWhileBusy(deadline, [&] { return tryLockByte(descriptor, counterByte); });
    if (outcome != Outcome::Done)
        return outcome;
    const auto place = nextPlace(descriptor);
    outcome = repeatWhileBusy(deadline, [&] { return tryLockByte(descriptor, place); });
    unlockByte(descriptor, counterByte);
    if (outcome != Outcome::Done)
        return outcome;
    return repeatWhileBusy(deadline, [&] { return tryFront(descriptor, place); });
}

} // namespace

Result<FileLock> FileLock::acquire(const std::string& path, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    const auto folder = path.substr(0, path.find_last_of('/'));
    if (auto made = makeOwnFolder(folder); !made)
        return made.error();
    const auto lockPath = path + ".lock";
    int descriptor = -1;
    do
        descriptor = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0)
        return failure("cannot open", lockPath);
    FileLock lock(descriptor);
    struct stat status { };
    if (::fstat(descriptor, &status) != 0
        || ((status.st_mode & 0777U) != 0600U && ::fchmod(descriptor, 0600) != 0))
        return failure("cannot make private", lockPath);
    // Without a line it is still a lock.
    auto outcome = waitInLine(descriptor, deadline);
    if (outcome != Outcome::Busy) {
        outcome = repeatWhileBusy(
            deadline, [&] { return outcomeOf(::flock(descriptor, LOCK_EX | LOCK_NB)); });
    }
    if (outcome == Outcome::Failed)
        return failure("cannot lock", lockPath);
    if (outcome == Outcome::Busy)
        return Error{ErrorCode::Unavailable, "another program keeps " + lockPath + " locked"};
    return lock;
}

FileLock::~FileLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

} // namespace zarn::linux_backend
