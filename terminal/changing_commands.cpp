// SPDX-License-Identifier: MIT
#include "terminal/changing_commands.h"

#include "api/failure_cause.h"
#include "base/utf8.h"
#include "base/wipe.h"
#include "log/write_to_log.h"
#include "platform/instance_lock.h"
#include "platform/run_loop.h"
#include "platform/terminal.h"
#include "profiles/server_url.h"
#include "terminal/no_files.h"

#include <utility>

namespace zarn {

namespace {

std::string quoted(const std::string& name)
{
    return "\"" + name + "\"";
}

Registration registrationOf(const Command& command)
{
    const bool usesApiClient = command.user.empty();
    return {command.name, command.url, usesApiClient ? command.clientId : command.user,
        usesApiClient, Wiped<std::string>()};
}

} // namespace

ChangingCommands::ChangingCommands(const CommandContext& context)
    : m_context(context)
    , m_servers(context.domains, context.services.clock)
{
}

ExitCode ChangingCommands::failed(const AccessResult& result)
{
    if (result.code == ExitCode::Interrupted)
        return result.code;
    return m_context.status.fail(result.code, result.cause);
}

ExitCode ChangingCommands::takeLock()
{
    switch (m_context.services.instanceLock.take()) {
    case InstanceLock::Outcome::Taken:
        return ExitCode::Done;
    case InstanceLock::Outcome::WindowOpen:
        return m_context.status.fail(ExitCode::WindowOpen,
            "the window of Zarn Actions is open and would undo this; quit it or do this there");
    case InstanceLock::Outcome::Busy:
        return m_context.status.fail(
            ExitCode::WindowOpen, "another command is changing the profiles; try again");
    case InstanceLock::Outcome::Failed:
        break;
    }
    return m_context.status.fail(ExitCode::NotWritten,
        "the folder of the settings cannot be used, or is in use on another machine");
}

ExitCode ChangingCommands::open(Keychain& keychain)
{
    if (const auto code = takeLock(); code != ExitCode::Done)
        return code;
    m_editor = std::make_unique<ProfileEditor>(m_context, keychain);
    return m_context.services.runLoop.isInterrupted() ? ExitCode::Interrupted : ExitCode::Done;
}

ExitCode ChangingCommands::openFor(const std::string& name, Keychain& keychain)
{
    if (const auto code = open(keychain); code != ExitCode::Done)
        return code;
    return m_editor->has(name) ? ExitCode::Done : m_context.status.failNotFound(name);
}

ExitCode ChangingCommands::probeKeyring()
{
    // An item that is there, if any is: only then a locked keyring says that it is.
    auto match = m_context.keychain.copyMatching(
        {std::string(keychainAccessGroup), std::string(currentProfileService), std::nullopt, true});
    if (match.item)
        wipe(match.item->secret);
    if (m_context.services.runLoop.isInterrupted())
        return ExitCode::Interrupted;
    const auto status = m_context.keychain.failure();
    return status
        ? m_context.status.fail(ExitCode::Keyring, keyringProblem(m_context.keychain, *status))
        : ExitCode::Done;
}

Result<std::string, AccessResult> ChangingCommands::readSecret(const Registration& registration)
{
    const auto* kind = registration.usesApiClient ? "Client secret of " : "Password of ";
    auto secret = m_context.services.terminal.readLine(
        kind + registration.username + " at " + peerName(registration.url) + ": ", Echo::Off);
    if (m_context.services.runLoop.isInterrupted())
        return AccessResult{ExitCode::Interrupted, {}};
    if (!secret || secret->empty())
        return AccessResult{ExitCode::Usage, "standard input has no secret"};
    if (!isUtf8(*secret)) {
        wipe(*secret);
        return AccessResult{ExitCode::Usage, "the secret is not UTF-8"};
    }
    return *std::move(secret);
}

ExitCode ChangingCommands::add(const Command& command)
{
    if (command.ifMissing) {
        const auto found = isRegistered(command);
        if (!found)
            return failed(found.error());
        if (found.value())
            return ExitCode::Done;
    }
    return prove(registrationOf(command), Command::Verb::Add);
}

ExitCode ChangingCommands::set(const Command& command)
{
    const auto profile = m_servers.find(command.name);
    if (!profile)
        return m_context.status.failNotFound(command.name);
    auto registration = registrationOf(command);
    registration.url = profile->server;
    if (registration.username.empty()) {
        auto login = ServerAccess(m_context, {profile->name, profile->server}).login();
        if (!login && login.error().code == ExitCode::NotFound)
            return m_context.status.fail(ExitCode::NotFound,
                "no user of " + quoted(profile->name) + " is stored; use --user or --client-id");
        if (!login)
            return failed(login.error());
        wipe(login.value().secret);
        registration.username = login.value().username;
        registration.usesApiClient = login.value().usesApiClient;
    }
    return prove(std::move(registration), Command::Verb::Set);
}

ExitCode ChangingCommands::prove(Registration registration, Command::Verb verb)
{
    // A person who types takes time, and must not keep others waiting; but no one should type a
    // secret for nothing.
    if (const auto code = takeLock(); code != ExitCode::Done)
        return code;
    m_context.services.instanceLock.release();
    if (const auto code = probeKeyring(); code != ExitCode::Done)
        return code;
    auto secret = readSecret(registration);
    if (!secret)
        return failed(secret.error());
    registration.secret.get() = secret.value();
    wipe(secret.value());
    const bool isNew = verb == Command::Verb::Add;
    if (const auto code
        = isNew ? open(m_context.keychain) : openFor(registration.name, m_context.keychain);
        code != ExitCode::Done)
        return code;
    const auto code = isNew ? m_editor->add(registration) : m_editor->set(registration);
    if (code != ExitCode::Done)
        return failed({code, m_context.status.failure()});
    const auto stored = m_servers.find(registration.name);
    if (!stored || stored->server != registration.url || !stored->isCurrent)
        return m_context.status.fail(ExitCode::NotWritten, "the profile was not stored");
    m_success = m_context.alerts.lastMessage();
    return ExitCode::Done;
}

Result<bool, AccessResult> ChangingCommands::isRegistered(const Command& command)
{
    const auto profile = m_servers.find(command.name);
    if (!profile || profile->server != command.url)
        return false;
    const auto wanted = registrationOf(command);
    NoFiles noFiles;
    LogFile noLog({noFiles, m_context.services.clock, m_context.services.dateFormatter});
    const ConnectionState connection;
    const auto credentials = std::make_shared<Credentials>(
        Credentials::Deps{m_context.keychain, m_context.keychainQueue(), noLog, connection});
    const auto prefix = wanted.usesApiClient ? apiClientItemPrefix : userItemPrefix;
    auto items = credentials->checkExisting(
        std::string(prefix) + hostFromServerURL(command.url), wanted.username);
    const bool isThere = !items.empty();
    for (auto& [account, secret] : items)
        wipe(secret);
    if (m_context.services.runLoop.isInterrupted())
        return AccessResult{ExitCode::Interrupted, {}};
    if (const auto status = m_context.keychain.failure())
        return AccessResult{ExitCode::Keyring, keyringProblem(m_context.keychain, *status)};
    return isThere;
}

ExitCode ChangingCommands::use(const Command& command)
{
    if (const auto code = openFor(command.name, m_noKeychain); code != ExitCode::Done)
        return code;
    m_editor->use(command.name);
    if (const auto stored = m_servers.find(command.name); !stored || !stored->isCurrent)
        return m_context.status.fail(ExitCode::NotWritten, "the choice was not stored");
    m_success = quoted(command.name) + " is the current server";
    return ExitCode::Done;
}

ExitCode ChangingCommands::remove(const Command& command)
{
    if (!command.yes && !m_context.services.terminal.isInputTerminal())
        return m_context.status.fail(
            ExitCode::Usage, "standard input is no terminal to ask on; use --yes");
    if (const auto code = openFor(command.name, m_noKeychain); code != ExitCode::Done)
        return code;
    if (command.yes)
        m_context.alerts.assumeYes();
    m_editor->remove(command.name);
    if (m_context.services.runLoop.isInterrupted())
        return ExitCode::Interrupted;
    if (m_editor->has(command.name)) {
        m_success = "nothing was removed";
        return ExitCode::Done;
    }
    if (m_servers.find(command.name))
        return m_context.status.fail(ExitCode::NotWritten, "the list was not stored");
    m_success = quoted(command.name) + " was removed from the list; its keychain items stay";
    return ExitCode::Done;
}

ExitCode ChangingCommands::report()
{
    if (const auto status = m_context.keychain.failure())
        return m_context.status.fail(ExitCode::Keyring,
            "the server is registered, but its secret was not stored: "
                + keyringProblem(m_context.keychain, *status) + "; then run 'zarn-profile set'");
    return m_success.empty() ? ExitCode::Done : m_context.status.print(m_success + "\n");
}

} // namespace zarn
