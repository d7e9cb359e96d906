// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/files/descriptor.h"

#include <chrono>
#include <string>
#include <string_view>

namespace zarn::linux_backend {

/// Keeps a second copy of the program away: two would overwrite each other's profile map. The
/// system knows the holder of the lock and releases it however the holder ends. One thread; one
/// object a lock file, since the lock belongs to the process.
class SingleInstance {
public:
    enum class Outcome {
        /// This process is the first, until it ends.
        First,
        /// Another one runs; it was asked to raise its window.
        RaisedOther,
        /// The lock is held where it cannot be reached: on another machine that shares the folder.
        Elsewhere,
        /// The lock file cannot be used.
        Failed
    };
    /// Takes the lock `path`, or asks its holder to raise its window (SIGUSR1) and hands it the
    /// token with which the desktop lets this start come to the front, or an empty one. A holder
    /// that is ending is waited for, at most `patience`. Catch SIGUSR1 before.
    Outcome claim(const std::string& path, std::chrono::milliseconds patience,
        std::string_view activationToken);
    /// The token that the last start handed over, once; empty if there is none, or something else
    /// in its place.
    std::string takeActivationToken() const;
    /// From now on a new start waits for the end of this process instead of calling on it.
    void announceEnding() const;

private:
    void handOver(std::string_view activationToken) const;
    bool isHolderEnding() const;

    Descriptor m_file;
};

} // namespace zarn::linux_backend
