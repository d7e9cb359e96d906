// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zarn::demo {

/// A listening, non-blocking socket.
struct Listener {
    int socket = -1;
    std::uint16_t port = 0;
    bool tls = false;
};

/// Listens on the same port of every address (0: any that is free on all) and appends the sockets.
/// A machine without IPv6 goes without it. False, with the reason in `error`, when an address is
/// not a loopback one or the port is taken.
bool listenOnAll(const std::vector<std::string>& addresses, std::uint16_t wanted, bool tls,
    std::vector<Listener>& listeners, std::string& error);

void closeListeners(std::vector<Listener>& listeners);

} // namespace zarn::demo
