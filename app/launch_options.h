// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"
#include "platform/keychain.h"

#include <span>
#include <string>
#include <vector>

namespace zarn {

/// What the command line asks for.
struct LaunchOptions {
    enum class Task { Run, Help, Version, Diagnose, DiagnoseServer };
    Task task = Task::Run;
    /// The URL of the server to diagnose, as it was given.
    std::string server;
    /// The name of a keychain, or empty when nothing is forced.
    std::string keychain;
    /// "-key", "value", "-key", "value" ...: values for the standard settings domain, this run
    /// only.
    std::vector<std::string> settings;
};

/// Reads a command line without the program's name; `keychains` are those that it may name. The
/// error is one line without a line break.
Result<LaunchOptions> parseLaunchOptions(
    const std::vector<std::string>& arguments, std::span<const KeychainKind> keychains);

/// What --help prints.
std::string launchHelp(std::span<const KeychainKind> keychains);

} // namespace zarn
