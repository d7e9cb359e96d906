// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zarn::linux_backend {

/// The parts of an HTTP request's address. Nothing is guessed: a text that is not plainly an http
/// or https address is rejected. Any thread.
struct HttpUrl {
    bool https = false;
    /// Lower-case ASCII, beyond ASCII after IDNA; an IPv6 address in its usual form, without
    /// brackets; a trailing dot is kept.
    std::string host;
    bool isIpv6 = false;
    std::uint16_t port = 0;
    /// Path and query, beyond ASCII percent-encoded; begins with "/". Fragments are dropped.
    std::string target;

    /// Nothing for another scheme or none, "https:/host", a user name before the host, an empty
    /// host or one with other characters than names have, numbers that look like an address and are
    /// not four decimal ones ("0x7f.1", "127.1"), and a port out of 1 to 65535.
    static std::optional<HttpUrl> parse(std::string_view text);
    /// The address that `reference`, the text of a Location header, means relative to this one
    /// (RFC 3986, section 5.2).
    std::optional<HttpUrl> resolve(std::string_view reference) const;

    /// Scheme, host and port are equal. "host." is another host than "host".
    bool sameOrigin(const HttpUrl& other) const;
    /// 127.0.0.0/8, ::1 or "localhost".
    bool isLoopback() const;
    /// Scheme, host and port; for messages.
    std::string origin() const;
    std::string text() const { return origin() + target; }
};

} // namespace zarn::linux_backend
