// SPDX-License-Identifier: MIT
#include "api/token_delegate.h"

#include "api/alert_display.h"
#include "api/bundle_texts.h"
#include "api/endpoint_url.h"
#include "api/failure_cause.h"
#include "api/server_version.h"
#include "api/status_display.h"
#include "base/json.h"
#include "log/write_to_log.h"
#include "platform/clock.h"
#include "platform/settings.h"

namespace zarn {

namespace {

constexpr std::string_view tokenOperation = "TokenDelegate.getToken";
constexpr std::string_view versionOperation = "TokenDelegate.getVersion";

bool isSuccess(int status)
{
    return status >= 200 && status <= 299;
}

// Describes a reply without its texts: one of them may be a token.
Value withoutTexts(const Value& value)
{
    if (const auto* text = value.string())
        return "(" + std::to_string(text->size()) + " bytes of text)";
    if (const auto* array = value.array()) {
        Value::Array shape;
        for (const auto& member : *array)
            shape.push_back(withoutTexts(member));
        return shape;
    }
    if (const auto* dictionary = value.dictionary()) {
        Value::Dictionary shape;
        for (const auto& [key, member] : *dictionary)
            shape[key] = withoutTexts(member);
        return shape;
    }
    return value;
}

std::string describeOptional(const Result<Value>& parsed)
{
    // A hostile server must not fill the disk through the log.
    constexpr std::size_t longest = 4096;
    if (!parsed)
        return "nil";
    auto text = describe(withoutTexts(parsed.value()));
    if (text.size() > longest) {
        auto end = longest;
        while ((static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
            --end;
        text = text.substr(0, end) + "...";
    }
    return "Optional(" + text + ")";
}

} // namespace

UrlSessionConfiguration TokenDelegate::tokenConfiguration(
    bool apiClient, const std::string& credentials) const
{
    UrlSessionConfiguration configuration;
    configuration.storage = UrlSessionConfiguration::Storage::Ephemeral;
    auto& headers = configuration.additionalHeaders;
    if (apiClient) {
        headers.emplace_back("Content-Type", "application/x-www-form-urlencoded");
    } else {
        headers.emplace_back("Authorization", "Basic " + credentials);
        // Sent although there is no body: the server's front end requires it.
        headers.emplace_back("Content-Type", "application/json");
    }
    headers.emplace_back("Accept", "application/json");
    headers.emplace_back("User-Agent", m_deps.texts.userAgentText());
    return configuration;
}

void TokenDelegate::requestToken(const std::string& serverUrl, const std::string& credentials,
    VersionProbe probe, ValidationCompletion completion)
{
    const bool forceBasic = m_deps.standardDefaults.integer("forceBasicAuth") == 1;
    m_deps.log.writeEntry("[TokenDelegate.getToken] Force basic authentication on " + serverUrl
        + ": " + (forceBasic ? "true" : "false"));
    m_deps.sessions.removeAllCachedResponses();
    const bool apiClient = m_deps.connection.useApiClient == 1;
    const auto endpoint
        = collapseApiSlashes(serverUrl + (apiClient ? "/api/oauth/token" : "/api/v1/auth/token"));
    const auto url = Url::fromText(endpoint);
    if (!url) {
        m_deps.log.writeEntry(
            "[TokenDelegate.getToken] Problem constructing the URL from " + endpoint);
        m_deps.status.showFailure(tokenOperation, causeOfMalformedUrl(endpoint));
        completion(500, "failed");
        return;
    }
    // The default time-out stays: the transport caps it at the same 60 s, so raising it here alone
    // would do nothing.
    UrlRequest request{*url, "POST"};
    m_deps.log.writeEntry("[TokenDelegate.getToken] Attempting to retrieve token from "
        + url->text() + " for version look-up");
    if (apiClient) {
        // Id and secret go in verbatim: servers in use expect them without form encoding.
        request.body = "grant_type=client_credentials&client_id=" + m_deps.connection.username
            + "&client_secret=" + m_deps.connection.password;
    }
    const auto session
        = m_deps.sessions.makeSession(tokenConfiguration(apiClient, credentials), *this);
    m_deps.status.showProgress(Wait::Server, "Asking " + peerName(serverUrl) + " for a token");
    session->dataTask(request,
        [self = shared_from_this(), session,
            asked = TokenRequest{apiClient, probe,
                {forceBasic, serverUrl, credentials, std::move(completion), 0}}](
            const UrlReply& reply) {
            session->finishTasksAndInvalidate();
            self->m_deps.status.endProgress(Wait::Server);
            self->handleTokenReply(asked, reply);
        });
}

void TokenDelegate::handleTokenReply(const TokenRequest& request, const UrlReply& reply)
{
    const auto& serverUrl = request.context.serverUrl;
    if (!reply) {
        tokenFailed(request, 0, "failedToConnect", causeOfError(reply.error(), serverUrl));
        return;
    }
    const auto& response = reply.value();
    if (!isSuccess(response.status)) {
        tokenFailed(request, response.status, "failedToAuthenticate",
            causeOfTokenStatus(response, serverUrl));
        return;
    }
    const auto parsed = parseJson(response.body);
    const auto* object = parsed ? parsed.value().dictionary() : nullptr;
    if (!object) {
        m_deps.log.writeEntry("[TokenDelegate.getToken] JSON error.\n" + describeOptional(parsed));
        tokenFailed(request, response.status, "failed", causeOfBadJson(serverUrl));
        return;
    }
    TokenRequest answered = request;
    answered.context.tokenReplyStatus = response.status;
    adoptToken(answered, *object);
}

void TokenDelegate::tokenFailed(const TokenRequest& request, std::int64_t statusCode,
    const char* result, const std::string& cause)
{
    m_deps.connection.bearerTokenActive = false;
    m_deps.status.showFailure(tokenOperation, cause);
    request.context.completion(statusCode, result);
}

void TokenDelegate::adoptToken(const TokenRequest& request, const Value::Dictionary& reply)
{
    auto& connection = m_deps.connection;
    const auto& context = request.context;
    connection.bearerTokenActive = true;
    // A reply without a token counts as success all the same, with an empty token.
    connection.token
        = stringMember(reply, request.apiClient ? "access_token" : "token").value_or("");
    connection.authScheme = "Bearer";
    connection.base64Creds = context.credentials;
    connection.tokenCreated = m_deps.clock.now();
    m_deps.log.writeEntry("[TokenDelegate.getToken] new token created for " + context.serverUrl);
    if (request.probe == VersionProbe::Never) {
        context.completion(200, "success");
        return;
    }
    if (connection.serverVersion.empty()) {
        probeVersion(context);
        return;
    }
    // The version is asked for once in a process: every later validation ends here, with Bearer.
    m_deps.log.writeEntry(
        "[TokenDelegate.getVersion] call token refresh process for " + context.serverUrl);
    context.completion(200, "success");
}

void TokenDelegate::probeVersion(VersionContext context)
{
    const ApiCall call{
        context.serverUrl, "zarn-pro-version", "", {}, m_deps.connection.token, "GET"};
    m_deps.status.showProgress(
        Wait::Server, "Asking " + peerName(context.serverUrl) + " for its version");
    action(call,
        [self = shared_from_this(), context = std::move(context)](
            const Value::Dictionary& result, const std::string& cause) {
            self->m_deps.status.endProgress(Wait::Server);
            auto answered = context;
            answered.cause = cause;
            self->getVersion(result, answered);
        });
}

void TokenDelegate::getVersion(const Value::Dictionary& result, const VersionContext& context)
{
    const auto version = stringMember(result, "version");
    if (!version) {
        versionFailed(context);
        return;
    }
    // An empty version, and one of fewer than three parts, call no completion.
    if (version->empty()) {
        m_deps.status.showFailure(versionOperation, causeOfBadVersion(*version, context.serverUrl));
        return;
    }
    auto& connection = m_deps.connection;
    m_deps.log.writeEntry("[TokenDelegate.getVersion] Zarn Pro Version: " + *version);
    connection.serverVersion = *version;
    const auto parts = ServerVersion::parse(*version);
    if (!parts) {
        m_deps.status.showFailure(versionOperation, causeOfBadVersion(*version, context.serverUrl));
        return;
    }
    connection.versionMajor = parts->major;
    connection.versionMinor = parts->minor;
    connection.versionPatch = parts->patch;
    if (parts->build)
        connection.versionBuild = *parts->build;
    if (parts->selectsBearer() && !context.forceBasic) {
        connection.authScheme = "Bearer";
        connection.bearerTokenActive = true;
        m_deps.log.writeEntry(
            "[TokenDelegate.getVersion] " + context.serverUrl + " set to use Bearer Token");
    } else {
        setBasic(context);
    }
    context.completion(200, "success");
}

void TokenDelegate::setBasic(const VersionContext& context)
{
    auto& connection = m_deps.connection;
    connection.authScheme = "Basic";
    connection.bearerTokenActive = false;
    connection.token = context.credentials;
    m_deps.log.writeEntry(
        "[TokenDelegate.getVersion] " + context.serverUrl + " set to use Basic Authentication");
}

void TokenDelegate::versionFailed(const VersionContext& context)
{
    m_deps.status.showFailure(versionOperation,
        context.cause.empty() ? causeOfMissingVersion(context.serverUrl) : context.cause);
    m_deps.log.writeEntry(
        "[TokenDelegate.getToken] failed to get version information from " + context.serverUrl);
    m_deps.connection.bearerTokenActive = false;
    m_deps.alerts.display(
        "Attention", "Failed to get version information from " + context.serverUrl, "");
    context.completion(context.tokenReplyStatus, "failed");
}

} // namespace zarn
