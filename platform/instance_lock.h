// SPDX-License-Identifier: MIT
#pragma once

namespace zarn {

/// Keeps a command that changes profiles away from an open window and from other commands: each
/// keeps the whole map in memory and replaces what is stored. Main thread only.
class InstanceLock {
public:
    enum class Outcome {
        Taken,
        WindowOpen,
        /// Another command, or a window that is ending, did not end in time.
        Busy,
        /// The place of the settings cannot be used, or is in use on another machine.
        Failed
    };

    virtual ~InstanceLock() = default;
    /// Ends at once while a window is open; waits for others, 10 s at most. Taken until release()
    /// or the end of the process.
    [[nodiscard]] virtual Outcome take() = 0;
    /// Does nothing when it is not taken.
    virtual void release() = 0;
};

} // namespace zarn
