// SPDX-License-Identifier: MIT
#pragma once

namespace zarn {

/// How a command ends. The numbers are a promise to scripts; the manual page has the table.
enum class ExitCode {
    Done = 0,
    /// By the server.
    Refused = 1,
    Usage = 2,
    NotReachable = 3,
    NotFound = 4,
    Keyring = 5,
    Terms = 6,
    WindowOpen = 7,
    /// The settings, a file or standard output.
    NotWritten = 8,
    /// By a signal, which then ends the process.
    Interrupted = 130
};

} // namespace zarn
