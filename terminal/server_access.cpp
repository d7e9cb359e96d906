// SPDX-License-Identifier: MIT
#include "terminal/server_access.h"

#include "api/endpoint_url.h"
#include "api/failure_cause.h"
#include "api/token_delegate.h"
#include "base/base64.h"
#include "platform/run_loop.h"
#include "profiles/settings_domains.h"
#include "terminal/profile_editor.h"

namespace zarn {

std::string keyringProblem(const Keychain& keychain, KeychainStatus status)
{
    constexpr const char* advice
        = "; unlock it in a desktop session of this user, or use --keychain=file";
    // Where nobody can be asked, the service says that the user refused.
    if (status == keychain_status::userCanceled)
        return std::string("The keyring is locked and was not unlocked") + advice;
    auto text = keychain.messageText(status).value_or("The keychain failed");
    return status == keychain_status::interactionNotAllowed ? text + advice : text;
}

ServerAccess::ServerAccess(const CommandContext& context, Server server)
    : m_context(context)
    , m_server(std::move(server))
    , m_logFile({m_noFiles, context.services.clock, context.services.dateFormatter})
    , m_log(m_logFile)
    , m_delegate(std::make_shared<TokenDelegate>(TokenDelegate::Deps{.connection = m_connection,
          .sessions = context.services.urlSessions,
          .standardDefaults = context.domains.standardDefaults(),
          .texts = context.texts,
          .clock = context.services.clock,
          .log = m_log,
          .alerts = context.alerts,
          .console = m_console,
          .status = context.status}))
{
}

ServerAccess::~ServerAccess() = default;

Result<StoredLogin, AccessResult> ServerAccess::login()
{
    StoredLogins stored(
        {.connection = m_connection, .domains = m_context.domains, .credentials = [this] {
             return std::make_shared<Credentials>(Credentials::Deps{
                 m_context.keychain, m_context.keychainQueue(), m_logFile, m_connection});
         }});
    if (auto found = stored.find(m_server.name, m_server.url))
        return *std::move(found);
    if (m_context.services.runLoop.isInterrupted())
        return AccessResult{ExitCode::Interrupted, {}};
    if (const auto status = m_context.keychain.failure())
        return AccessResult{ExitCode::Keyring, keyringProblem(m_context.keychain, *status)};
    return AccessResult{
        ExitCode::NotFound, "the keyring has no secret for it; store one with 'zarn-profile set'"};
}

AccessResult ServerAccess::logIn(Proof proof)
{
    auto found = login();
    if (!found)
        return found.error();
    m_connection.serverUrl = m_server.url;
    m_connection.username = found.value().username;
    m_connection.password = found.value().secret;
    wipe(found.value().secret);
    m_connection.base64Creds = base64Encoded(m_connection.username + ":" + m_connection.password);
    m_context.status.forgetFailure();
    const auto outcome = std::make_shared<std::optional<UpdateOutcome>>();
    auto completion = [outcome](std::int64_t statusCode, const std::string& result) {
        *outcome = {statusCode, result};
    };
    if (proof == Proof::TokenAlone)
        m_delegate->getTokenAlone(m_server.url, m_connection.base64Creds, std::move(completion));
    else
        m_delegate->getToken(m_server.url, m_connection.base64Creds, std::move(completion));
    const bool isOver = m_context.services.runLoop.runUntil(
        [&] { return *outcome || !m_context.status.failure().empty(); });
    if (!isOver)
        return {ExitCode::Interrupted, {}};
    // A version that is not understood ends without an outcome.
    return {*outcome ? exitCodeOf(**outcome) : ExitCode::Refused, m_context.status.failure()};
}

AccessResult ServerAccess::check()
{
    return logIn(Proof::LikeTheWindow);
}

Result<std::string, AccessResult> ServerAccess::token()
{
    if (auto result = logIn(Proof::TokenAlone); result.code != ExitCode::Done)
        return result;
    if (m_connection.token.empty())
        return AccessResult{
            ExitCode::Refused, peerName(m_server.url) + " did not send a token; check the address"};
    return m_connection.token;
}

Result<Value::Dictionary, AccessResult> ServerAccess::call(
    const std::string& method, const std::string& endpoint, const Value::Dictionary& data)
{
    const auto address = apiUrlText(m_server.url, endpoint);
    if (const auto problem = Url::problemIn(address))
        return AccessResult{ExitCode::Usage, "PATH or the server URL holds " + *problem};
    auto newToken = token();
    if (!newToken)
        return newToken.error();
    struct Reply {
        Value::Dictionary object;
        std::string cause;
    };
    const auto reply = std::make_shared<std::optional<Reply>>();
    m_context.status.showProgress(Wait::Server, "Calling " + peerName(m_server.url));
    m_delegate->action({m_server.url, endpoint, "", data, newToken.value(), method},
        [reply](const Value::Dictionary& object, const std::string& cause) {
            *reply = Reply{object, cause};
        });
    wipe(newToken.value());
    if (!m_context.services.runLoop.runUntil([&] { return reply->has_value(); }))
        return AccessResult{ExitCode::Interrupted, {}};
    auto& [object, cause] = **reply;
    if (cause.empty())
        return std::move(object);
    // Without a response there is no object at all. A reply without content has none either.
    const auto status = object.find("ZPAPI_response");
    if (status == object.end())
        return AccessResult{ExitCode::NotReachable, cause};
    if (status->second == Value(204))
        return Value::Dictionary{};
    return AccessResult{ExitCode::Refused, cause};
}

} // namespace zarn
