// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

struct ssl_st;
struct ssl_ctx_st;

namespace zarn::demo {

/// One accepted connection, plain or TLS. Every wait ends at its deadline or when the server stops.
/// One thread.
class Connection {
public:
    using Clock = std::chrono::steady_clock;

    /// Takes over `socket`. `stop` becomes readable when the server stops. `context` is null for
    /// http.
    Connection(int socket, int stop, ssl_ctx_st* context, Clock::time_point deadline);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// True at once for http.
    bool handshake();
    /// Bytes read; 0 at the end of the stream, negative on failure.
    long read(char* buffer, std::size_t size);
    bool write(std::string_view bytes);
    /// False when the connection's time is over, the server stops or, if `orPeer`, the client
    /// closes or sends.
    bool pause(std::chrono::milliseconds time, bool orPeer = false);
    /// Ends with a TCP reset.
    void reset();
    /// Ends in order: TLS close notification, end of stream, a moment for the client to read on.
    void close();

    /// Ends without the TLS close notification.
    void endStream();

    std::string tlsVersion() const;
    std::string serverName() const;

private:
    bool waitFor(short events);
    bool retry(int result);

    int m_socket;
    int m_stop;
    ssl_st* m_ssl = nullptr;
    Clock::time_point m_deadline;
};

} // namespace zarn::demo
