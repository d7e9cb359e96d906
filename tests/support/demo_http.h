// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zarn::demo {

using Headers = std::vector<std::pair<std::string, std::string>>;

/// A request as it came over the wire.
struct Request {
    std::string method;
    std::string target;
    std::string version;
    /// Names and values in the order and letter case received, blanks around values dropped.
    Headers headers;
    std::string body;
    /// "TLSv1.3" and so on; empty for http.
    std::string tlsVersion;
    /// The name the client asked for in the TLS handshake.
    std::string serverName;
    std::uint16_t port = 0;
    /// Everything received, before it was taken apart.
    std::string raw;

    /// The first value of a header, its name in any letter case; "" when absent.
    std::string header(std::string_view name) const;
    /// The target without its query.
    std::string path() const;
};

/// A reply, with all that can go wrong with one.
struct Reply {
    int status = 200;
    std::string reason;
    Headers headers;
    /// The body is `bodyStart`, then `body` `repeat` times (forever when endless), then `bodyEnd`.
    std::string bodyStart;
    std::string body;
    std::uint64_t repeat = 1;
    std::string bodyEnd;
    bool endless = false;
    /// Sent as it is in place of status line, headers and body.
    std::optional<std::string> raw;
    /// Without Content-Length: the end of the connection is the end of the body.
    bool withoutLength = false;
    /// Waits before the first byte.
    std::chrono::milliseconds delay{0};
    /// Sends one byte at a time with this pause after each.
    std::chrono::milliseconds byteInterval{0};
    /// Resets the connection after that many bytes of the reply.
    std::optional<std::uint64_t> dropAfter;
    /// Ends the stream there without a reset, and without the TLS close notification.
    bool dropQuietly = false;
    /// Keeps the connection open and silent after the last byte, until the client goes.
    bool stall = false;
};

/// The part of a reply before its body, or all of `raw`.
std::string replyHead(const Reply& reply);

/// Takes apart the head (all before the blank line) of a request; false when it is malformed.
bool parseHead(std::string_view head, Request& request);

/// The pairs of an application/x-www-form-urlencoded text, in order.
Headers parseForm(std::string_view text);
/// The first value of `name`, or nothing.
std::optional<std::string> formValue(const Headers& form, std::string_view name);

/// A JSON string literal; each byte beyond ASCII becomes the code point of the same number, so
/// that a reader gets the exact bytes back as Latin-1.
std::string jsonString(std::string_view bytes);
/// One line of JSON: method, target, version, headers (a list of pairs), body, tls, serverName,
/// port.
std::string toJsonLine(const Request& request);

std::string base64Decoded(std::string_view text);
bool equalsIgnoringCase(std::string_view a, std::string_view b);

} // namespace zarn::demo
