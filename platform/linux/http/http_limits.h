// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>

namespace zarn::linux_backend {

/// How long and how much a request may take. Tests scale them down.
struct HttpLimits {
    /// From the start to a connection, name look-up and TLS handshake included. A request's own
    /// time-out counts where it is shorter; the same for `idle`.
    std::chrono::milliseconds connect{60'000};
    /// Without a byte in either direction.
    std::chrono::milliseconds idle{60'000};
    /// In all, redirects included.
    std::chrono::milliseconds total{300'000};
    /// Of one reply, after decoding.
    std::size_t bodyBytes = std::size_t{16} << 20U;
    /// Of one reply, interim replies and trailers included.
    std::size_t headerBytes = std::size_t{256} << 10U;
};

} // namespace zarn::linux_backend
