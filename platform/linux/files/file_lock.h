// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"

#include <chrono>
#include <string>
#include <utility>

namespace zarn::linux_backend {

/// An exclusive lock between processes, on a file beside the one it protects. Whoever waits is
/// served in turn. The system releases it when its holder ends, however it ends. Any thread.
class FileLock {
public:
    /// Waits for the lock on `path` + ".lock", at most `limit` (then ErrorCode::Unavailable). Makes
    /// the folder when it is not there.
    static Result<FileLock> acquire(const std::string& path, std::chrono::milliseconds limit);
    ~FileLock();
    FileLock(FileLock&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }
    FileLock& operator=(FileLock&&) = delete;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    explicit FileLock(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    int m_descriptor;
};

} // namespace zarn::linux_backend
