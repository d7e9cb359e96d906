// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/demo_certificates.h"
#include "tests/support/demo_http.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zarn::demo {

struct ServerOptions {
    bool https = true;
    bool http = true;
    /// 0 takes any free port.
    std::uint16_t httpsPort = 0;
    std::uint16_t httpPort = 0;
    /// Loopback addresses only: the server refuses to start on any other.
    std::vector<std::string> addresses = {"127.0.0.1", "::1"};
    /// The server's certificate and the intermediate ones it shows, PEM; and the key.
    std::string certificateChainPem;
    std::string keyPem;
    /// 10 is TLS 1.0, 13 is TLS 1.3.
    int lowestTls = 12;
    int highestTls = 13;
    /// A connection beyond them is closed at once.
    std::size_t maximumConnections = 64;
    std::chrono::milliseconds connectionLifetime = std::chrono::minutes(10);
};

/// Answers one request. Called on the connections' threads, several at a time.
using Handler = std::function<Reply(const Request&)>;

/// What reached a server so far.
struct Traffic {
    std::size_t connections = 0;
    std::size_t handshakes = 0;
    /// Bytes of requests, after decryption, whether or not they made a whole request.
    std::size_t requestBytes = 0;
    std::size_t requests = 0;
};

/// An HTTP server on loopback, one thread a connection, one request a connection. Bounded in
/// connections and in the life of each. Destroying it closes everything.
class Server {
public:
    /// Nothing, and the reason in `error`, when it cannot listen.
    static std::unique_ptr<Server> start(
        const ServerOptions& options, Handler handler, std::string& error);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// 0 when that protocol is off.
    std::uint16_t httpsPort() const;
    std::uint16_t httpPort() const;
    Traffic traffic() const;

private:
    class Implementation;
    explicit Server(std::unique_ptr<Implementation> implementation);
    std::unique_ptr<Implementation> m_implementation;
};

} // namespace zarn::demo
