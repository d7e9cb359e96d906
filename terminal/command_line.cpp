// SPDX-License-Identifier: MIT
#include "terminal/command_line.h"

#include "profiles/status_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace zarn {

namespace {

constexpr const char* summary
    = "Registers Zarn Pro servers for your automation actions, and gives actions what they need.\n"
      "Does in a terminal, over ssh and in scripts what the window of Zarn Actions does.";

constexpr const char* footer
    = R"help(A command prints its own options with --help. NAME is the display name of a server;
where it may be left out, the current server is meant. A secret is typed without echo,
or read as one line from standard input where that is no terminal. Without --keychain
the keyring service is used, and the file only where there is no such service.

First steps:
  zarn-profile terms --accept
  zarn-profile add Berlin --url https://zarn.example:8443 --client-id ID
  zarn-profile check
  zarn-profile api GET buildings

exit status: 0 done, 1 refused by the server, 2 wrong usage, 3 server not reachable,
  4 not found, 5 keyring, 6 terms of use not accepted, 7 window open, 8 not written)help";

/// Adds a command; its description is the first line of its help.
CLI::App* addVerb(CLI::App& app, Command& command, Command::Verb verb, const char* name,
    const char* description, const char* details)
{
    auto* sub = app.add_subcommand(name, description);
    sub->group("Commands")->footer(details);
    sub->callback([&command, verb] { command.verb = verb; });
    return sub;
}

void addName(CLI::App* sub, Command& command, bool isRequired)
{
    auto* option = sub->add_option("NAME", command.name,
        isRequired ? "display name of the server"
                   : "display name of the server (default: current)");
    option->required(isRequired)->type_name("");
}

void addJson(CLI::App* sub, Command& command)
{
    sub->add_flag("--json", command.json, "print JSON");
}

void addWho(CLI::App* sub, Command& command)
{
    sub->add_option("--user", command.user, "username; the secret is its password")
        ->type_name("NAME");
    sub->add_option(
           "--client-id", command.clientId, "API client id; the secret is the client secret")
        ->type_name("ID");
}

void addChangingVerbs(CLI::App& app, Command& command)
{
    auto* add = addVerb(app, command, Command::Verb::Add, "add", "Register a server",
        "Asks the server whether it accepts the credentials. Only then the profile and the secret\n"
        "are stored and the server becomes the current one.");
    addName(add, command, true);
    add->add_option(
           "--url", command.url, "address of the server, such as https://zarn.example:8443")
        ->required()
        ->type_name("URL");
    addWho(add, command);
    add->add_flag("--if-missing", command.ifMissing,
        "do nothing if this server is registered with this username or client id");

    auto* set = addVerb(app, command, Command::Verb::Set, "set",
        "Give a registered server a new secret",
        "Asks the server whether it accepts the new secret. Only then it is stored and the server\n"
        "becomes the current one. Without --user or --client-id the stored one is kept.");
    addName(set, command, true);
    addWho(set, command);

    addName(addVerb(app, command, Command::Verb::Use, "use", "Make a server the current one",
                "Actions then use this server. Neither the server nor the keyring is asked."),
        command, true);
    auto* remove
        = addVerb(app, command, Command::Verb::Remove, "remove", "Take a server off the list",
            "Its items in the keyring stay: actions that use them go on working.");
    addName(remove, command, true);
    remove->add_flag("-y,--yes", command.yes, "do not ask");
}

void addReadingVerbs(CLI::App& app, Command& command)
{
    addJson(addVerb(app, command, Command::Verb::List, "list", "List the registered servers",
                "One line each: the name, a tab, the address. An asterisk marks the current one."),
        command);
    auto* show = addVerb(app, command, Command::Verb::Show, "show", "Show a profile",
        "Without --reveal the keyring is not asked.");
    addName(show, command, false);
    addJson(show, command);
    show->add_flag("--reveal", command.reveal, "with the secret; not on a terminal");
    show->add_flag("--force", command.force, "reveal the secret on a terminal too");

    auto* check = addVerb(app, command, Command::Verb::Check, "check",
        "Ask servers whether the stored credentials work",
        "Prints a line for each server: that it works, or why not. Changes nothing.");
    addName(check, command, false);
    check->add_flag("--all", command.all, "every registered server");
    addJson(check, command);
}

void addServerVerbs(CLI::App& app, Command& command)
{
    auto* token = addVerb(app, command, Command::Verb::Token, "token", "Print a new access token",
        "Nothing else is printed. Send it as \"Authorization: Bearer TOKEN\".");
    addName(token, command, false);
    addJson(token, command);

    auto* api = addVerb(app, command, Command::Verb::Api, "api", "Call the API of a server",
        "PATH is the endpoint below the API root, such as buildings or auth/invalidate-token; the\n"
        "version in front of it is added. The JSON object that the server sends is printed.");
    api->add_option("METHOD", command.method, "GET, POST or PUT")->required()->type_name("");
    api->add_option("PATH", command.path, "endpoint")->required()->type_name("");
    addName(api, command, false);
    api->add_option("--data", command.data, "file with a JSON object to send; - is standard input")
        ->type_name("FILE");

    auto* terms = addVerb(app, command, Command::Verb::Terms, "terms", "Print the terms of use",
        "Until they are accepted, here or in the window, only list, show and terms work.");
    terms->add_flag("--accept", command.accept, "accept them");
    addJson(terms, command);
}

std::string oneLine(std::string text)
{
    while (text.ends_with('\n'))
        text.pop_back();
    return plainLine(text);
}

/// Names an option without its value: it may have been meant for a secret.
std::string unexpected(const std::vector<std::string>& words)
{
    const auto isOption = [](const std::string& word) { return word.starts_with('-'); };
    const auto option = std::ranges::find_if(words, isOption);
    if (option != words.end())
        return "unknown option " + option->substr(0, option->find('='));
    return words.empty() ? "too many arguments" : "unexpected argument " + words.front();
}

std::string problemOf(const Command& command)
{
    const bool takesName = command.verb == Command::Verb::Add || command.verb == Command::Verb::Set
        || command.verb == Command::Verb::Use || command.verb == Command::Verb::Remove;
    if (takesName && command.name.empty())
        return "NAME is empty";
    const bool hasUser = !command.user.empty();
    const bool hasClient = !command.clientId.empty();
    if (hasUser && hasClient)
        return "--user and --client-id exclude each other";
    if (command.verb == Command::Verb::Add && !hasUser && !hasClient)
        return "--user or --client-id is required";
    if (command.all && !command.name.empty())
        return "--all and NAME exclude each other";
    if (command.force && !command.reveal)
        return "--force goes with --reveal";
    if (command.verb == Command::Verb::Api && command.method != "GET" && command.method != "POST"
        && command.method != "PUT")
        return "METHOD is GET, POST or PUT";
    return {};
}

} // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments,
    std::span<const KeychainKind> keychains, const std::string& version)
{
    const auto refusal = [](const std::string& problem) {
        return CommandLine{
            std::nullopt, ExitCode::Usage, oneLine(problem) + " (see zarn-profile --help)"};
    };
    Command command;
    CLI::App app(summary, "zarn-profile");
    auto format = std::make_shared<CLI::Formatter>();
    format->column_width(24);
    format->label("OPTIONS", "OPTION...");
    format->label("SUBCOMMAND", "COMMAND");
    format->label("Subcommands", "Commands");
    format->label("Positionals", "Arguments");
    format->label("REQUIRED", "");
    app.formatter(format);
    app.footer(footer);
    app.set_help_flag("-h,--help", "print this text and end");
    app.set_version_flag("-V,--version", "zarn-profile " + version, "print the version and end");
    std::vector<std::string> names;
    std::string help = "where secrets are kept:";
    for (const auto& kind : keychains) {
        help += (names.empty() ? " " : " or ") + std::string(kind.name);
        names.emplace_back(kind.name);
    }
    app.add_option("--keychain", command.keychain, help)
        ->type_name("KIND")
        ->check([names](const std::string& name) {
            return std::ranges::find(names, name) != names.end() ? "" : "unknown keychain " + name;
        });
    app.require_subcommand(0, 1);
    app.fallthrough();
    addChangingVerbs(app, command);
    addReadingVerbs(app, command);
    addServerVerbs(app, command);
    try {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        app.parse(std::move(reversed));
    } catch (const CLI::CallForVersion& request) {
        return {std::nullopt, ExitCode::Done, std::string(request.what()) + "\n"};
    } catch (const CLI::CallForHelp&) {
        return {std::nullopt, ExitCode::Done, app.help()};
    } catch (const CLI::ExtrasError&) {
        return refusal(unexpected(app.remaining(true)));
    } catch (const CLI::ParseError& error) {
        return refusal(error.what());
    }
    if (app.get_subcommands().empty())
        return refusal("no command");
    if (const auto problem = problemOf(command); !problem.empty())
        return refusal(problem);
    return {command, ExitCode::Done, {}};
}

} // namespace zarn
