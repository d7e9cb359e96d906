// SPDX-License-Identifier: MIT
#include "base/json.h"
#include "base/wipe.h"
#include "platform/linux/keychain/keychain_factory.h"
#include "zarn/product_constants.h"

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace zarn::linux_backend {
namespace {

constexpr auto help = R"(usage: zarn-keychain [--keychain=secret-service|file] [--json] list
       zarn-keychain [--keychain=...] [--access-group=GROUP] [--force] show SERVICE [ACCOUNT]

Reads the items that Zarn Actions keeps, from the desktop's keyring service or, where no such
service exists, from the encrypted file keychain. Changes no item.

  list   prints one line for each item: service, tab, account, tab, access group. No secrets.
         Control characters and backslashes are printed as \xNN.
  show   writes the secret of an item to standard output, byte for byte and nothing else. Without
         ACCOUNT it is the item of the service that was first written. Refused while standard
         output is a terminal, where a secret would stay readable; --force overrides that.

  --keychain=secret-service   only the keyring service
  --keychain=file             only the file keychain
  --json                      the list as JSON: an array of objects with the texts "service",
                              "account" and "accessGroup"
  --access-group=GROUP        default Q7X2M9K4TA.org.zarnie.zpshortcuts
  -h, --help                  prints this text
  -V, --version               prints the version

exit status:
  0  done
  1  there is no such item
  2  wrong usage, or standard output is a terminal
  3  the keyring is locked, does not answer or refused, or its prompt was dismissed
  4  there is no keyring service, or it has no default collection
  5  the keychain file cannot be read or opened, or standard output cannot be written
)";

enum ExitCode { Done, NotFound, Usage, Refused, NoService, Unreadable };

struct Command {
    KeychainChoice choice = KeychainChoice::Automatic;
    std::string accessGroup{keychainAccessGroup};
    bool force = false;
    bool json = false;
    bool help = false;
    bool version = false;
    std::vector<std::string> words;
};

std::optional<std::string> optionValue(const std::string& argument, std::string_view name)
{
    if (!argument.starts_with(name))
        return std::nullopt;
    return argument.substr(name.size());
}

std::optional<Command> parse(const std::vector<std::string>& arguments)
{
    Command command;
    bool optionsEnded = false;
    for (const auto& argument : arguments) {
        if (!optionsEnded && (argument == "--help" || argument == "-h")) {
            command.help = true;
        } else if (!optionsEnded && (argument == "--version" || argument == "-V")) {
            command.version = true;
        } else if (optionsEnded || !argument.starts_with("--")) {
            command.words.push_back(argument);
        } else if (argument == "--") {
            optionsEnded = true;
        } else if (argument == "--force") {
            command.force = true;
        } else if (argument == "--json") {
            command.json = true;
        } else if (const auto group = optionValue(argument, "--access-group=")) {
            command.accessGroup = *group;
        } else if (const auto name = optionValue(argument, "--keychain=")) {
            const auto choice = keychainChoice(*name);
            if (!choice)
                return std::nullopt;
            command.choice = *choice;
        } else {
            return std::nullopt;
        }
    }
    return command;
}

int exitCode(KeychainStatus status)
{
    switch (status) {
    case keychain_status::success:
        return Done;
    case keychain_status::itemNotFound:
        return NotFound;
    case keychain_status::notAvailable:
    case keychain_status::noDefaultKeychain:
        return NoService;
    case keychain_status::invalidKeychain:
    case keychain_status::ioFailure:
        return Unreadable;
    default:
        return Refused;
    }
}

void complain(const std::string& line)
{
    std::fprintf(stderr, "zarn-keychain: %s\n", line.c_str());
}

int failed(KeychainStatus status)
{
    complain(keychainMessageText(status).value_or(""));
    return exitCode(status);
}

std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F && c != '\\') {
            result += c;
            continue;
        }
        std::array<char, 5> code{};
        std::snprintf(code.data(), code.size(), "\\x%02X", static_cast<unsigned>(byte));
        result += code.data();
    }
    return result;
}

int written(const std::string& text)
{
    const bool ok
        = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && !std::fflush(stdout);
    if (!ok)
        complain("standard output cannot be written");
    return ok ? Done : Unreadable;
}

int list(KeychainStore& store, const Command& command)
{
    const auto listing = store.list();
    if (listing.status != keychain_status::success)
        return failed(listing.status);
    if (command.json) {
        Value::Array items;
        for (const auto& [item, created, modified] : listing.items) {
            Value::Dictionary object;
            object["service"] = item.service;
            object["account"] = item.account;
            object["accessGroup"] = item.accessGroup;
            items.emplace_back(std::move(object));
        }
        // Texts alone always have a form in JSON.
        return written(prettyPrintedJson(items).value());
    }
    std::string lines;
    for (const auto& [item, created, modified] : listing.items)
        lines += escaped(item.service) + "\t" + escaped(item.account) + "\t"
            + escaped(item.accessGroup) + "\n";
    return written(lines);
}

int show(KeychainStore& store, const Command& command)
{
    KeychainQuery query{command.accessGroup, command.words[1], std::nullopt, true};
    if (command.words.size() == 3)
        query.account = command.words[2];
    auto match = store.copyMatching(query);
    if (match.status != keychain_status::success)
        return failed(match.status);
    // Unbuffered, so that no copy of the secret stays behind in a buffer.
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    Wiped<std::string> secret(std::string(match.item->secret.begin(), match.item->secret.end()));
    wipe(match.item->secret);
    return written(secret.get());
}

int run(const std::vector<std::string>& arguments)
{
    const auto command = parse(arguments);
    if (command && command->help)
        return written(help);
    if (command && command->version)
        return written(std::string("zarn-keychain ") + product::shortVersion + " ("
            + product::buildNumber + ")\n");
    const auto count = command ? command->words.size() : 0;
    const bool isList = count == 1 && command->words[0] == "list";
    const bool isShow = (count == 2 || count == 3) && command->words[0] == "show" && !command->json;
    if (!isList && !isShow) {
        complain("wrong usage; see zarn-keychain --help");
        return Usage;
    }
    if (isShow && !command->force && ::isatty(STDOUT_FILENO)) {
        complain("standard output is a terminal; use --force to show the secret there");
        return Usage;
    }
    auto options = keychainOptions(command->choice);
    options.moveItems = false;
    CallContext call(complain);
    call.begin({std::chrono::seconds(5)});
    const auto store = makeKeychainStore(options, call);
    // A person may be typing the keyring's password.
    call.begin({std::chrono::seconds(60), std::chrono::minutes(5)});
    return isList ? list(*store, *command) : show(*store, *command);
}

} // namespace
} // namespace zarn::linux_backend

int main(int argc, char** argv)
{
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    ::prctl(PR_SET_DUMPABLE, 0);
    return zarn::linux_backend::run({argv + 1, argv + argc});
}
