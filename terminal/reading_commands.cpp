// SPDX-License-Identifier: MIT
#include "terminal/reading_commands.h"

#include "base/json.h"
#include "base/wipe.h"
#include "platform/terminal.h"

namespace zarn {

ReadingCommands::ReadingCommands(const CommandContext& context)
    : m_context(context)
    , m_servers(context.domains, context.services.clock)
{
}

ExitCode ReadingCommands::print(const std::string& text)
{
    return m_context.status.print(text);
}

ExitCode ReadingCommands::failed(const ProfileFacts& profile, const AccessResult& result)
{
    if (result.code == ExitCode::Interrupted)
        return result.code;
    return m_context.status.fail(result.code, profile.name + ": " + result.cause);
}

std::optional<ProfileFacts> ReadingCommands::profileFor(const Command& command)
{
    auto profile = m_servers.find(command.name);
    if (!profile)
        m_context.status.failNotFound(command.name);
    return profile;
}

ServerAccess ReadingCommands::accessTo(const ProfileFacts& profile) const
{
    return ServerAccess(m_context, {profile.name, profile.server});
}

ExitCode ReadingCommands::list(const Command& command)
{
    const auto profiles = m_servers.all(m_context.services.textServices);
    return print(command.json ? listJson(profiles) : listText(profiles));
}

ExitCode ReadingCommands::show(const Command& command)
{
    if (command.reveal && !command.force && m_context.services.terminal.isOutputTerminal())
        return m_context.status.fail(
            ExitCode::Usage, "standard output is a terminal; use --force to show the secret there");
    const auto profile = profileFor(command);
    if (!profile)
        return ExitCode::NotFound;
    if (!command.reveal)
        return print(
            command.json ? profileJson(*profile, nullptr) : profileText(*profile, nullptr));
    auto login = accessTo(*profile).login();
    if (!login)
        return failed(*profile, login.error());
    Wiped<std::string> text(command.json ? profileJson(*profile, &login.value())
                                         : profileText(*profile, &login.value()));
    wipe(login.value().secret);
    return print(text.get());
}

ExitCode ReadingCommands::check(const Command& command)
{
    std::vector<ProfileFacts> profiles;
    if (command.all)
        profiles = m_servers.all(m_context.services.textServices);
    else if (const auto profile = profileFor(command))
        profiles.push_back(*profile);
    else
        return ExitCode::NotFound;
    auto code = ExitCode::Done;
    std::vector<CheckFacts> checks;
    for (const auto& profile : profiles) {
        const auto result = accessTo(profile).check();
        if (result.code == ExitCode::Interrupted)
            return result.code;
        if (code == ExitCode::Done)
            code = result.code;
        checks.push_back(
            {profile.name, profile.server, static_cast<int>(result.code), result.cause});
        if (command.json)
            continue;
        if (const auto printed = print(checkText(checks.back())); printed != ExitCode::Done)
            return printed;
    }
    if (command.json) {
        if (const auto printed = print(checksJson(checks)); printed != ExitCode::Done)
            return printed;
    }
    return code;
}

ExitCode ReadingCommands::token(const Command& command)
{
    const auto profile = profileFor(command);
    if (!profile)
        return ExitCode::NotFound;
    auto token = accessTo(*profile).token();
    if (!token)
        return failed(*profile, token.error());
    Wiped<std::string> text(
        command.json ? tokenJson(profile->server, token.value()) : token.value() + "\n");
    wipe(token.value());
    return print(text.get());
}

ExitCode ReadingCommands::api(const Command& command)
{
    Value::Dictionary data;
    if (!command.data.empty()) {
        const auto bytes = m_context.services.terminal.readAll(command.data);
        if (!bytes)
            return m_context.status.fail(ExitCode::Usage, "--data: " + bytes.error().message);
        const auto parsed = parseJson(bytes.value());
        if (!parsed || !parsed.value().dictionary())
            return m_context.status.fail(ExitCode::Usage, "--data: not a JSON object");
        data = *parsed.value().dictionary();
    }
    const auto profile = profileFor(command);
    if (!profile)
        return ExitCode::NotFound;
    auto endpoint = command.path;
    endpoint.erase(0, endpoint.starts_with('/') ? 1 : 0);
    const auto reply = accessTo(*profile).call(command.method, endpoint, data);
    if (!reply)
        return failed(*profile, reply.error());
    if (reply.value().empty())
        return ExitCode::Done;
    // What was parsed as JSON has a form in it.
    return print(prettyPrintedJson(reply.value()).value());
}

} // namespace zarn
