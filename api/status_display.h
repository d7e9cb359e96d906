// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace zarn {

/// What the program may be waiting for.
enum class Wait { Server, Keyring };

/// The line of the window that says what is going on and why something failed. No text given to it
/// holds a secret. Main thread only.
class StatusDisplay {
public:
    virtual ~StatusDisplay() = default;

    /// Says what the program waits for, until endProgress of the same kind.
    virtual void showProgress(Wait wait, std::string_view text) = 0;
    /// Does nothing without a progress of that kind.
    virtual void endProgress(Wait wait) = 0;
    /// The cause of a failure in one sentence. It stays until the next act of the user, and goes to
    /// standard output as well: "[operation] cause".
    virtual void showFailure(std::string_view operation, std::string_view cause) = 0;
};

} // namespace zarn
