// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/files/descriptor.h"

#include <chrono>
#include <string>
#include <string_view>

namespace zarn::linux_backend {

/// Keeps a second copy of the program away: two would overwrite each other's profile map. The
/// window holds the lock as long as it runs, a command that changes profiles for a moment. The
/// system knows the holder of the lock and releases it however the holder ends. One thread; one
/// object a lock file, since the lock belongs to the process.
class SingleInstance {
public:
    enum class Outcome {
        /// This process is the first, until it ends.
        First,
        /// A window is open; it was asked to come to the front, if a window asked.
        WindowOpen,
        /// A command, or a window that is ending, kept the lock for too long.
        Busy,
        /// The lock is held where it cannot be reached: on another machine that shares the folder.
        Elsewhere,
        /// The lock file cannot be used.
        Failed
    };
    /// Takes the lock `path` for a window, or asks the window that holds it to come to the front
    /// (SIGUSR1) and hands it the token with which the desktop lets this start do so, or an empty
    /// one. A command and a holder that is ending are waited for, at most `patience`. Catch SIGUSR1
    /// before.
    Outcome claim(const std::string& path, std::chrono::milliseconds patience,
        std::string_view activationToken);
    /// Takes the lock `path` for a command. Ends at once with WindowOpen where a window is open,
    /// which notices nothing. Other commands and a window that is ending are waited for. Ignore
    /// SIGUSR1 before: a window that starts may take this process for one for a moment.
    Outcome claimForCommand(const std::string& path, std::chrono::milliseconds patience);
    void release() { m_file = Descriptor(); }
    /// Returns and forgets the token that the last start handed over; empty without a valid one.
    std::string takeActivationToken() const;
    /// From now on a new start waits for the end of this process instead of calling on it.
    void announceEnding() const;

private:
    enum class Role : char { Window = 'w', Command = 'c', Ending = 'e', Unknown = 0 };
    struct Wish {
        Role role;
        std::string_view activationToken;
    };

    Outcome take(const std::string& path, std::chrono::milliseconds patience, const Wish& wish);
    /// What the holder said of itself; Unknown while the file holds what another process left.
    Role roleOf(int holder) const;
    bool writeRole(Role role) const;
    void handOver(std::string_view activationToken) const;

    Descriptor m_file;
};

} // namespace zarn::linux_backend
