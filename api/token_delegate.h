// SPDX-License-Identifier: MIT
#pragma once

#include "api/connection_state.h"
#include "base/value.h"
#include "platform/url_session.h"

#include <functional>
#include <memory>
#include <string>

namespace zarn {

class AlertDisplay;
class BundleTexts;
class Clock;
class Console;
class SettingsDomain;
class StatusDisplay;
class WriteToLog;

/// `cause` says in one sentence why the call failed; it is empty when the object is the server's
/// own.
using ApiCompletion
    = std::function<void(const Value::Dictionary& result, const std::string& cause)>;

/// One call of the server's API.
struct ApiCall {
    std::string serverUrl;
    /// Below the API root, without a leading "/".
    std::string endpoint;
    /// "" and "0" mean none.
    std::string id;
    /// Empty: no body.
    Value::Dictionary data;
    std::string token;
    /// "get", "create", "post", "skip" in any case; every other word sends "PUT".
    std::string method;
};

/// The server client: proves credentials by requesting a token, and calls the API. Main thread
/// only. The sessions it makes use it as their delegate; it answers no challenge, so that
/// certificates are verified as the system does. It outlives its requests because they share it.
class TokenDelegate final : public UrlSessionDelegate,
                            public std::enable_shared_from_this<TokenDelegate> {
public:
    struct Deps {
        ConnectionState& connection;
        UrlSessions& sessions;
        const SettingsDomain& standardDefaults;
        const BundleTexts& texts;
        const Clock& clock;
        WriteToLog& log;
        AlertDisplay& alerts;
        Console& console;
        StatusDisplay& status;
    };
    explicit TokenDelegate(const Deps& deps)
        : m_deps(deps)
    {
    }

    /// Asks for a token with the credentials of the connection state (`credentials` is their Base64
    /// form) and, the first time in the process, for the server's version. The outcome comes
    /// through `completion`: (500, "failed") at once when no URL can be formed, otherwise later. A
    /// server version that is empty or has fewer than three parts ends without a call. The
    /// progress, and the cause of every failure, are shown in the status line.
    void getToken(const std::string& serverUrl, const std::string& credentials,
        ValidationCompletion completion)
    {
        requestToken(serverUrl, credentials, VersionProbe::WhenUnknown, std::move(completion));
    }
    /// The same without asking for the version: the token stays a bearer token whatever the server.
    void getTokenAlone(const std::string& serverUrl, const std::string& credentials,
        ValidationCompletion completion)
    {
        requestToken(serverUrl, credentials, VersionProbe::Never, std::move(completion));
    }

    /// Sends one call and passes on the server's object, or one that describes the failure.
    /// A URL that cannot be formed stops the process.
    void action(const ApiCall& call, ApiCompletion completion);

    /// What else decides how a version reply is handled.
    struct VersionContext {
        bool forceBasic = false;
        std::string serverUrl;
        std::string credentials;
        ValidationCompletion completion;
        int tokenReplyStatus = 0;
        /// Why the reply is not the server's own object, or "".
        std::string cause = {};
    };
    /// Reads the version from the reply and chooses between Basic and Bearer.
    void getVersion(const Value::Dictionary& result, const VersionContext& context);

private:
    enum class VersionProbe { WhenUnknown, Never };
    struct TokenRequest {
        bool apiClient = false;
        VersionProbe probe = VersionProbe::WhenUnknown;
        VersionContext context;
    };
    void requestToken(const std::string& serverUrl, const std::string& credentials,
        VersionProbe probe, ValidationCompletion completion);
    UrlSessionConfiguration tokenConfiguration(
        bool apiClient, const std::string& credentials) const;
    void handleTokenReply(const TokenRequest& request, const UrlReply& reply);
    void tokenFailed(const TokenRequest& request, std::int64_t statusCode, const char* result,
        const std::string& cause);
    void adoptToken(const TokenRequest& request, const Value::Dictionary& reply);
    void probeVersion(VersionContext context);
    void handleActionReply(const ApiCall& call, const UrlRequest& request,
        const HttpResponse& response, const ApiCompletion& completion);
    void versionFailed(const VersionContext& context);
    void setBasic(const VersionContext& context);

    Deps m_deps;
};

} // namespace zarn
