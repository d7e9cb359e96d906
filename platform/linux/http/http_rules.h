// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/http/http_url.h"
#include "platform/url_session.h"

#include <optional>
#include <string>
#include <vector>

namespace zarn::linux_backend {

/// One request of a chain of redirects.
struct HttpHop {
    HttpUrl url;
    std::string method;
    std::optional<std::string> body;
};

inline constexpr int maximumRedirects = 16;

/// The address of a request that may be sent: http or https, and http to loopback hosts only.
Result<HttpUrl, UrlError> allowedAddress(const Url& url);

/// Whether these headers can go on the wire as they are: names are tokens, values hold no control
/// character but the tab, and none is a header that belongs to the transport (Host,
/// Content-Length, Transfer-Encoding, Connection and their like).
bool headersAreSafe(const HttpHeaders& headers);
/// Whether the text is a method: a non-empty token.
bool isHttpToken(std::string_view text);
bool sameHeaderName(std::string_view a, std::string_view b);
bool hasHeader(const HttpHeaders& headers, std::string_view name);
/// Without blanks and tabs at both ends.
std::string_view withoutOuterBlanks(std::string_view text);

/// Whether a request carries something that only its own server may see: an authorization header or
/// a body.
bool carriesCredentials(const HttpHeaders& headers, const std::optional<std::string>& body);

/// Where a reply leads. With neither member set it is not a redirect.
struct Redirect {
    std::optional<HttpHop> next;
    std::optional<UrlError> refused;
};

/// The request that a reply of this status with these Location headers leads to, or why the reply
/// is itself the response. 301 and 302 turn POST into GET, 303 every method but HEAD; a body goes
/// with its method. The session's headers stay. Two different Location headers lead nowhere.
Redirect nextHop(const HttpHop& hop, int status, const std::vector<std::string>& locations,
    bool withCredentials);

/// The status of an HTTP/1.0 or HTTP/1.1 status line, 100 to 999; nothing for any other line.
std::optional<int> statusOfLine(std::string_view line);

} // namespace zarn::linux_backend
