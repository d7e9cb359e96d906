// SPDX-License-Identifier: MIT
#pragma once

#include "base/url.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zarn {

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

struct UrlRequest {
    Url url;
    std::string method = "GET";
    std::optional<std::string> body = std::nullopt;
    std::chrono::seconds timeout{60};
};

struct HttpResponse {
    int status = 0;
    /// Bytes as received, after content decoding; may be empty.
    std::string body;
};

/// Nothing when no HTTP response arrived (no connection, time-out, malformed reply, body over the
/// limit).
using DataTaskCompletion = std::function<void(std::optional<HttpResponse>)>;

enum class ServerTrust {
    /// Verify the certificate against the system's store.
    Evaluate,
    /// Accept any certificate.
    AcceptAny
};

/// Each session asks it once, on the main thread, before its first connection.
class UrlSessionDelegate {
public:
    virtual ~UrlSessionDelegate() = default;
    virtual ServerTrust serverTrustDisposition() { return ServerTrust::Evaluate; }
};

struct UrlSessionConfiguration {
    enum class Storage { Ephemeral, Default };
    Storage storage = Storage::Default;
    HttpHeaders additionalHeaders;
};

/// A session for data tasks. Main thread only. Releasing it lets its running tasks finish.
class UrlSession {
public:
    virtual ~UrlSession() = default;

    /// Starts the request off the main thread. `completion` runs on the main thread, once, and
    /// never before this call has returned. Without a byte for `timeout`, without a connection
    /// within it, or after 300 s in all it ends without a response.
    ///
    /// Redirects: 301, 302 and 303 turn POST into GET, 307 and 308 keep method and body, at
    /// most 16. A request that carries an Authorization header or a form body follows them only
    /// within its own origin. Any other redirect, one from https to http, or the seventeenth is the
    /// response. http is allowed to loopback hosts only. Only the session's headers, Host,
    /// Content-Length and what the transport needs are sent. A carriage return, line feed or NUL in
    /// a header or URL ends the request without a response. A body over 16 MiB is no response.
    virtual void dataTask(const UrlRequest& request, DataTaskCompletion completion) = 0;

    /// Lets the running tasks finish; the session starts no new ones.
    virtual void finishTasksAndInvalidate() = 0;
};

/// Creates sessions. Main thread only. Destroying it cancels every running task; their completions
/// are destroyed without being called.
class UrlSessions {
public:
    virtual ~UrlSessions() = default;

    /// `delegate` outlives every task of the session.
    virtual std::shared_ptr<UrlSession> makeSession(
        const UrlSessionConfiguration& configuration, UrlSessionDelegate& delegate)
        = 0;

    /// Empties the cache that all sessions share.
    virtual void removeAllCachedResponses() = 0;
};

} // namespace zarn
