// SPDX-License-Identifier: MIT
#pragma once

#include "platform/connection_facts.h"

namespace zarn::linux_backend {

/// Connects to the server of an address as CurlUrlSessions does, TLS included, and sends no
/// request: its addresses, the proxy that is used, TLS version, the certificates that it shows, and
/// why it is refused. One whose certificate is refused is asked for its certificates once more,
/// without trusting them. Takes two minutes at most. Any thread.
ConnectionFacts probeConnection(const Url& url);

} // namespace zarn::linux_backend
