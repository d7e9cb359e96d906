// SPDX-License-Identifier: MIT
#pragma once

#include "platform/keychain.h"
#include "terminal/command.h"
#include "terminal/exit_code.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace zarn {

/// What became of a command line: a command, or a text that ends the program.
struct CommandLine {
    std::optional<Command> command;
    ExitCode exitCode = ExitCode::Done;
    /// For standard output if the exit code is 0; else one line for standard error.
    std::string text;
};

/// Reads a command line without the program's name; `keychains` are those that it may name.
CommandLine parseCommandLine(const std::vector<std::string>& arguments,
    std::span<const KeychainKind> keychains, const std::string& version);

} // namespace zarn
