// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zarn::demo {

struct TlsAnswer {
    /// As the library names it: "TLSv1", "TLSv1.1", ...
    std::string version;
    std::string text;
};

/// What a client that trusts everybody and takes any protocol, key and signature gets from a server
/// on this computer. It shows that a server that others refuse would have answered them.
std::optional<TlsAnswer> askTrustingEverybody(std::uint16_t port, const std::string& request);

} // namespace zarn::demo
