// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace zarn::linux_backend {

/// Keeps a second copy of the program away: two would overwrite each other's profile map. The
/// system knows the holder of the lock and releases it however the holder ends.
class SingleInstance {
public:
    enum class Outcome {
        /// This process is the first, until it ends.
        First,
        /// Another one runs; it was asked to raise its window.
        RaisedOther,
        /// The lock file cannot be used.
        Failed
    };
    ~SingleInstance();
    SingleInstance() = default;
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Takes the lock `path`, or asks its holder to raise its window (SIGUSR1).
    Outcome claim(const std::string& path);

private:
    int m_descriptor = -1;
};

} // namespace zarn::linux_backend
