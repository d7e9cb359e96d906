// SPDX-License-Identifier: MIT
#include "app/launch_options.h"

#include <algorithm>
#include <string_view>

namespace zarn {

namespace {

constexpr std::string_view helpBefore = R"(Usage: zarn-actions [OPTION]... [-KEY VALUE]...
Registers Zarn Pro servers and their credentials for your automation actions.

  -h, --help          print this text and end
  -V, --version       print the version and end
  --diagnose          check where settings, log and keychain are kept, and whether they can be
                      written and read; needs no display; exit code 0 only if all is well
  --diagnose URL      connect to a server as the window would, without credentials, and print
                      addresses, proxy, TLS version, certificates and why the server is refused;
                      exit code 0 only if it is reached and trusted
)";

constexpr std::string_view helpAfter
    = R"(  -KEY VALUE          a value of the settings domain com.zarn.ZarnActions for this run,
                      such as -forceBasicAuth 1

Without --keychain the keyring service is used, and the file only where there is no such service;
one line on standard error says so then.

A second start raises the window of the first and ends.
)";

constexpr std::string_view keychainOption = "--keychain=";

/// An option and its explanation, which begins on the next line where the option is too long.
std::string helpLine(const std::string& option, std::string_view explanation)
{
    constexpr std::size_t column = 22;
    std::string line = "  " + option;
    if (line.size() >= column)
        line += "\n";
    const auto width = line.size() - (line.rfind('\n') + 1);
    return line.append(column - width, ' ').append(explanation) + "\n";
}

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

std::string launchHelp(std::span<const KeychainKind> keychains)
{
    std::string help(helpBefore);
    for (const auto& kind : keychains)
        help += helpLine(std::string(keychainOption).append(kind.name), kind.help);
    return help.append(helpAfter);
}

Result<LaunchOptions> parseLaunchOptions(
    const std::vector<std::string>& arguments, std::span<const KeychainKind> keychains)
{
    const auto isKnown = [&](const std::string& name) {
        return std::ranges::find(keychains, name, &KeychainKind::name) != keychains.end();
    };
    LaunchOptions options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--help" || argument == "-h") {
            options.task = LaunchOptions::Task::Help;
        } else if (argument == "--version" || argument == "-V") {
            options.task = LaunchOptions::Task::Version;
        } else if (argument == "--diagnose") {
            options.task = LaunchOptions::Task::Diagnose;
            if (i + 1 < arguments.size() && !arguments[i + 1].starts_with('-')) {
                options.task = LaunchOptions::Task::DiagnoseServer;
                options.server = arguments[++i];
            }
        } else if (argument.substr(0, keychainOption.size()) == keychainOption) {
            options.keychain = argument.substr(keychainOption.size());
            if (!isKnown(options.keychain))
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
