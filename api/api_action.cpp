// SPDX-License-Identifier: MIT
#include "api/bundle_texts.h"
#include "api/endpoint_url.h"
#include "api/failure_cause.h"
#include "api/token_delegate.h"
#include "base/fatal.h"
#include "base/json.h"
#include "log/write_to_log.h"
#include "platform/console.h"

#include <algorithm>

namespace zarn {

namespace {

constexpr const char* invalidateEndpoint = "auth/invalidate-token";

std::string lowercased(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

// Every other word, including "delete", sends PUT on purpose.
std::string httpMethod(const std::string& word)
{
    if (word == "get")
        return "GET";
    return word == "create" || word == "post" ? "POST" : "PUT";
}

Value::Dictionary outcome(const char* result, int response)
{
    return {{"ZPAPI_result", result}, {"ZPAPI_response", response}};
}

} // namespace

void TokenDelegate::action(const ApiCall& call, ApiCompletion completion)
{
    const auto word = lowercased(call.method);
    if (word == "skip") {
        completion(outcome(call.endpoint == invalidateEndpoint ? "no valid token" : "failed", 0),
            "No request was sent");
        return;
    }
    m_deps.sessions.removeAllCachedResponses();
    auto urlText = apiUrlText(call.serverUrl, call.endpoint);
    if (!call.id.empty() && call.id != "0")
        urlText += "/" + call.id;
    const auto url = Url::fromText(urlText);
    if (!url)
        fatalError("an API call with a malformed URL");
    UrlSessionConfiguration configuration;
    UrlRequest request{*url, httpMethod(word)};
    if (!call.data.empty()) {
        if (auto body = prettyPrintedJson(call.data))
            request.body = std::move(body.value());
        else
            m_deps.console.writeLine(body.error().message);
    }
    m_deps.log.writeEntry("[Zpapi.action] Attempting " + call.method + " on " + urlText + ".");
    // "Bearer" whatever the chosen scheme says: with Basic the token holds the Base64 credentials.
    configuration.additionalHeaders
        = {{"Authorization", "Bearer " + call.token}, {"Content-Type", "application/json"},
            {"Accept", "application/json"}, {"User-Agent", m_deps.texts.userAgentText()}};
    const auto session = m_deps.sessions.makeSession(configuration, *this);
    session->dataTask(request,
        [self = shared_from_this(), session, call, request, completion = std::move(completion)](
            const UrlReply& reply) {
            session->finishTasksAndInvalidate();
            if (reply) {
                self->handleActionReply(call, request, reply.value(), completion);
                return;
            }
            self->m_deps.log.writeEntry(
                "[TokenDelegate.getVersion] GET response error.  Verify url and port.");
            completion({}, causeOfError(reply.error(), call.serverUrl));
        });
}

void TokenDelegate::handleActionReply(const ApiCall& call, const UrlRequest& request,
    const HttpResponse& response, const ApiCompletion& completion)
{
    if (response.status < 200 || response.status > 299) {
        m_deps.log.writeEntry(
            "[TokenDelegate.getVersion] Response error: " + std::to_string(response.status) + ".");
        auto result = outcome("failed", response.status);
        result["ZPAPI_method"] = request.method;
        result["ZPAPI_server"] = request.url.text();
        result["ZPAPI_token"] = call.token;
        completion(result, causeOfStatus(response, call.serverUrl));
        return;
    }
    const auto parsed = parseJson(response.body);
    if (parsed && parsed.value().dictionary())
        completion(*parsed.value().dictionary(), "");
    else if (response.status == 204 && call.endpoint == invalidateEndpoint)
        completion(outcome("token terminated", 204), "");
    else
        completion(outcome("failed", response.status), causeOfBadJson(call.serverUrl));
}

} // namespace zarn
