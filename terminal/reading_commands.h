// SPDX-License-Identifier: MIT
#pragma once

#include "terminal/command.h"
#include "terminal/command_context.h"
#include "terminal/registered_servers.h"
#include "terminal/server_access.h"

namespace zarn {

/// The commands that change nothing and never wait for a window. Main thread only.
class ReadingCommands {
public:
    explicit ReadingCommands(const CommandContext& context);

    ExitCode list(const Command& command);
    ExitCode show(const Command& command);
    ExitCode check(const Command& command);
    ExitCode token(const Command& command);
    ExitCode api(const Command& command);

private:
    /// The server that a command is about; one line on standard error where there is none.
    std::optional<ProfileFacts> profileFor(const Command& command);
    ServerAccess accessTo(const ProfileFacts& profile) const;
    ExitCode failed(const ProfileFacts& profile, const AccessResult& result);
    ExitCode print(const std::string& text);

    CommandContext m_context;
    RegisteredServers m_servers;
};

} // namespace zarn
