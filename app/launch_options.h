// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"

#include <string>
#include <string_view>
#include <vector>

namespace zarn {

/// What the command line asks for.
struct LaunchOptions {
    enum class Task { Run, Help, Version, Diagnose };
    Task task = Task::Run;
    /// "secret-service", "file", or empty when nothing is forced.
    std::string keychain;
    /// "-key", "value", "-key", "value" ...: values for the standard settings domain, this run
    /// only.
    std::vector<std::string> settings;
};

/// Reads a command line without the program's name. The error is one line without a line break.
Result<LaunchOptions> parseLaunchOptions(const std::vector<std::string>& arguments);

/// What --help prints.
extern const std::string_view launchHelp;

} // namespace zarn
