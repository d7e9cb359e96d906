// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"
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

/// Why there was no response, or why a redirect was not followed.
enum class UrlErrorCode {
    /// No http or https address of a host; one with a user name.
    BadUrl,
    /// http to another computer.
    InsecureHttp,
    /// A method or header that must not be sent.
    BadRequest,
    /// Credentials in a session that accepts any certificate.
    CredentialsWithheld,
    HostNotFound,
    ConnectionRefused,
    /// No connection for another reason, such as no route.
    CannotConnect,
    ProxyFailed,
    TimedOut,
    UnknownAuthority,
    WrongName,
    CertificateExpired,
    CertificateNotYetValid,
    /// A certificate that is not trusted for another reason, such as a weak key.
    CertificateRefused,
    /// No TLS connection for another reason than the certificate.
    TlsFailed,
    ConnectionLost,
    /// What came is not HTTP.
    BadReply,
    TooLarge,
    RedirectElsewhere,
    RedirectToHttp,
    TooManyRedirects,
    /// A redirect to what is no http or https address, or to two at once.
    BadRedirect,
    Other
};

struct UrlError {
    UrlErrorCode code = UrlErrorCode::Other;
    /// One line for people; for a redirect that leads elsewhere, where it leads. It never holds
    /// credentials, path or query.
    std::string text;
};

struct HttpResponse {
    int status = 0;
    /// Bytes as received, after content decoding; may be empty.
    std::string body;
    /// Why the redirect was not followed, when the reply is one.
    std::optional<UrlError> refusedRedirect = std::nullopt;
};

/// The HTTP response, or why there is none.
using UrlReply = Result<HttpResponse, UrlError>;
using DataTaskCompletion = std::function<void(const UrlReply&)>;

enum class ServerTrust {
    /// Verify the certificate against the system's store.
    Evaluate,
    /// Accept any certificate.
    AcceptAny
};

/// Decides how server certificates are checked. Each session asks it once, on the main thread,
/// before its first connection.
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
    /// within it, or after 300 s in all it ends without a response. A `timeout` above 60 s counts
    /// as 60 s.
    ///
    /// Redirects: 301 and 302 turn POST into GET, 303 every method but HEAD; 307 and 308 keep
    /// method and body; at most 16. A request that carries an Authorization or Cookie header or
    /// a body follows them only within its own origin. Any other redirect, one from https to http,
    /// or the seventeenth is the response. http is allowed to loopback hosts only. Only the
    /// session's headers, Host, Content-Length and what the transport needs are sent. A carriage
    /// return, line feed or NUL in a header or URL ends the request without a response. A body over
    /// 16 MiB is no response.
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
