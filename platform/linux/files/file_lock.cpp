// SPDX-License-Identifier: MIT
#include "platform/linux/files/file_lock.h"

#include "platform/linux/files/durable_file.h"

#include <cerrno>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace zarn::linux_backend {

Result<FileLock> FileLock::acquire(const std::string& path, std::chrono::milliseconds limit)
{
    using namespace std::chrono_literals;
    const auto deadline = std::chrono::steady_clock::now() + limit;
    if (auto made = makeOwnFolder(folderOf(path)); !made)
        return made.error();
    const auto lockPath = path + ".lock";
    auto file = Descriptor::open(lockPath, O_RDWR | O_CREAT, 0600);
    if (!file.ok())
        return failure("cannot open", lockPath);
    struct stat status { };
    if (::fstat(file.get(), &status) != 0
        || ((status.st_mode & 0777U) != 0600U && ::fchmod(file.get(), 0600) != 0))
        return failure("cannot make private", lockPath);
    for (auto pause = 100us; ::flock(file.get(), LOCK_EX | LOCK_NB) != 0;
         pause = std::min(2 * pause, 1000us)) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return failure("cannot lock", lockPath);
        if (std::chrono::steady_clock::now() >= deadline)
            return Error{ErrorCode::Unavailable, "another program keeps " + lockPath + " locked"};
        std::this_thread::sleep_for(pause);
    }
    return FileLock(std::move(file));
}

} // namespace zarn::linux_backend
