// SPDX-License-Identifier: MIT
#pragma once

#include "terminal/command.h"
#include "terminal/command_context.h"
#include "terminal/profile_editor.h"
#include "terminal/registered_servers.h"
#include "terminal/server_access.h"
#include "terminal/watched_keychain.h"

#include <memory>
#include <optional>
#include <string>

namespace zarn {

/// The commands that change profiles. One runs at a time, and none while a window is open: the lock
/// is kept until the process ends. Main thread only.
class ChangingCommands {
public:
    explicit ChangingCommands(const CommandContext& context);

    ExitCode add(const Command& command);
    ExitCode set(const Command& command);
    ExitCode use(const Command& command);
    ExitCode remove(const Command& command);
    /// Once the keychain has everything: what became of a command that ended with Done.
    ExitCode report();

private:
    ExitCode takeLock();
    /// Takes the lock and opens the configuration view.
    ExitCode open(Keychain& keychain);
    /// The same for a server that the menu has.
    ExitCode openFor(const std::string& name, Keychain& keychain);
    ExitCode probeKeyring();
    /// Whether what would be added is there, secret included.
    Result<bool, AccessResult> isRegistered(const Command& command);
    Result<std::string, AccessResult> readSecret(const Registration& registration);
    /// Reads the secret and lets the server decide.
    ExitCode prove(Registration registration, Command::Verb verb);
    ExitCode failed(const AccessResult& result);

    CommandContext m_context;
    RegisteredServers m_servers;
    EmptyKeychain m_noKeychain;
    std::unique_ptr<ProfileEditor> m_editor;
    /// What was done; printed once everything is stored.
    std::string m_success;
};

} // namespace zarn
