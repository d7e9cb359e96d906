// SPDX-License-Identifier: MIT
#pragma once

#include "platform/connection_facts.h"

#include <functional>
#include <string>

namespace zarn {

struct ConnectionReport {
    /// Lines, each of one fact.
    std::string text;
    bool isWell = false;
};

/// Tries to connect, as a request to this address would, without sending one.
using ConnectionProbe = std::function<ConnectionFacts(const Url&)>;

/// Connects to the server as asking it for a token would, and reports what was found and, as the
/// status line does, why the server is refused.
ConnectionReport reportConnection(const std::string& serverUrl, const ConnectionProbe& probe);

} // namespace zarn
