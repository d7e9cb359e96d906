// SPDX-License-Identifier: MIT
#include "app/launch_options.h"

namespace zarn {

const std::string_view launchHelp = R"(Usage: zarn-actions [OPTION]... [-KEY VALUE]...
Registers Zarn Pro servers and their credentials for your automation actions.

  -h, --help          print this text and end
  -V, --version       print the version and end
  --diagnose          check where settings, log and keychain are kept, and whether they can be
                      written and read; needs no display; exit code 0 only if all is well
  --keychain=secret-service
                      keep secrets in the keyring service of the desktop, nowhere else
  --keychain=file     keep secrets in a file protected by file permissions
  -KEY VALUE          a value of the settings domain com.zarn.ZarnActions for this run,
                      such as -forceBasicAuth 1

Without --keychain the keyring service is used, and the file only where there is no such service;
one line on standard error says so then.

A second start raises the window of the first and ends.
)";

namespace {

constexpr std::string_view keychainOption = "--keychain=";

bool isSettingsKey(std::string_view argument)
{
    return argument.size() > 1 && argument[0] == '-' && argument[1] != '-';
}

/// The argument, bounded and without control characters, for one line of a message.
std::string quoted(std::string_view argument)
{
    std::string result = "'";
    for (const char c : argument.substr(0, 100))
        result += static_cast<unsigned char>(c) < 0x20 || c == 0x7f ? '?' : c;
    return result + "'";
}

Error refusal(const std::string& reason)
{
    return {ErrorCode::InvalidArgument, reason + " (see --help)"};
}

} // namespace

Result<LaunchOptions> parseLaunchOptions(const std::vector<std::string>& arguments)
{
    LaunchOptions options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--help" || argument == "-h") {
            options.task = LaunchOptions::Task::Help;
        } else if (argument == "--version" || argument == "-V") {
            options.task = LaunchOptions::Task::Version;
        } else if (argument == "--diagnose") {
            options.task = LaunchOptions::Task::Diagnose;
        } else if (argument.substr(0, keychainOption.size()) == keychainOption) {
            options.keychain = argument.substr(keychainOption.size());
            if (options.keychain != "secret-service" && options.keychain != "file")
                return refusal("unknown keychain " + quoted(options.keychain));
        } else if (isSettingsKey(argument)) {
            if (i + 1 == arguments.size())
                return refusal("no value after " + quoted(argument));
            options.settings.emplace_back(argument);
            options.settings.push_back(arguments[++i]);
        } else {
            return refusal("unknown option " + quoted(argument));
        }
    }
    return options;
}

} // namespace zarn
