// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"
#include "platform/linux/files/descriptor.h"

#include <chrono>
#include <string>

namespace zarn::linux_backend {

/// An exclusive lock (`flock`) between processes, on a file beside the one it protects. The system
/// releases it when its holder ends, however it ends. Any thread.
class FileLock {
public:
    /// Waits for the lock on `path` + ".lock", at most `limit` (then ErrorCode::Unavailable).
    /// Waiters are not served in turn. Makes the folder when it does not exist.
    static Result<FileLock> acquire(const std::string& path, std::chrono::milliseconds limit);

private:
    explicit FileLock(Descriptor file)
        : m_file(std::move(file))
    {
    }
    Descriptor m_file;
};

} // namespace zarn::linux_backend
