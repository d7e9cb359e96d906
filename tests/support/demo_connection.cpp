// SPDX-License-Identifier: MIT
#include "tests/support/demo_connection.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace zarn::demo {

namespace {

int millisecondsUntil(Connection::Clock::time_point deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - Connection::Clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count() + 1, 0, 3'600'000));
}

} // namespace

Connection::Connection(int socket, int stop, ssl_ctx_st* context, Clock::time_point deadline)
    : m_socket(socket)
    , m_stop(stop)
    , m_deadline(deadline)
{
    if (context) {
        m_ssl = SSL_new(context);
        SSL_set_fd(m_ssl, socket);
        SSL_set_accept_state(m_ssl);
    }
}

Connection::~Connection()
{
    SSL_free(m_ssl);
    if (m_socket >= 0)
        ::close(m_socket);
}

bool Connection::waitFor(short events)
{
    pollfd descriptors[] = {{m_socket, events, 0}, {m_stop, POLLIN, 0}};
    const int ready = poll(descriptors, 2, millisecondsUntil(m_deadline));
    return ready > 0 && descriptors[1].revents == 0;
}

// Whether a TLS operation that returned `result` can go on after a wait, which is done here.
bool Connection::retry(int result)
{
    const int error = SSL_get_error(m_ssl, result);
    if (error == SSL_ERROR_WANT_READ)
        return waitFor(POLLIN);
    return error == SSL_ERROR_WANT_WRITE && waitFor(POLLOUT);
}

bool Connection::handshake()
{
    if (!m_ssl)
        return true;
    for (;;) {
        ERR_clear_error();
        const int result = SSL_do_handshake(m_ssl);
        if (result == 1)
            return true;
        if (!retry(result))
            return false;
    }
}

long Connection::read(char* buffer, std::size_t size)
{
    for (;;) {
        if (m_ssl) {
            ERR_clear_error();
            const int result = SSL_read(m_ssl, buffer, static_cast<int>(size));
            if (result > 0)
                return result;
            if (SSL_get_error(m_ssl, result) == SSL_ERROR_ZERO_RETURN)
                return 0;
            if (!retry(result))
                return -1;
            continue;
        }
        const auto result = recv(m_socket, buffer, size, 0);
        if (result >= 0)
            return result;
        if (errno != EINTR && (errno != EAGAIN || !waitFor(POLLIN)))
            return -1;
    }
}

bool Connection::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        if (m_ssl) {
            ERR_clear_error();
            const auto size = static_cast<int>(std::min<std::size_t>(bytes.size(), 1U << 20U));
            const int result = SSL_write(m_ssl, bytes.data(), size);
            if (result > 0)
                bytes.remove_prefix(static_cast<std::size_t>(result));
            else if (!retry(result))
                return false;
            continue;
        }
        const auto result = send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (result >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(result));
        else if (errno != EINTR && (errno != EAGAIN || !waitFor(POLLOUT)))
            return false;
    }
    return true;
}

bool Connection::pause(std::chrono::milliseconds time, bool orPeer)
{
    const auto end = Clock::now() + time;
    pollfd descriptors[] = {{m_stop, POLLIN, 0}, {m_socket, POLLIN, 0}};
    const nfds_t count = orPeer ? 2 : 1;
    while (Clock::now() < end) {
        const int ready = poll(descriptors, count, millisecondsUntil(std::min(end, m_deadline)));
        if (ready > 0 || (ready < 0 && errno != EINTR) || Clock::now() >= m_deadline)
            return false;
    }
    return true;
}

void Connection::reset()
{
    const linger now{1, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &now, sizeof now);
    ::close(m_socket);
    m_socket = -1;
}

void Connection::close()
{
    if (m_ssl)
        SSL_shutdown(m_ssl);
    endStream();
}

void Connection::endStream()
{
    shutdown(m_socket, SHUT_WR);
    // Closing with unread bytes would reset the connection under a reply that is still on its way.
    m_deadline = std::min(m_deadline, Clock::now() + std::chrono::seconds(2));
    char buffer[4096];
    for (;;) {
        const auto result = recv(m_socket, buffer, sizeof buffer, 0);
        if (result == 0 || (result < 0 && (errno != EAGAIN || !waitFor(POLLIN))))
            return;
    }
}

std::string Connection::tlsVersion() const
{
    return m_ssl ? SSL_get_version(m_ssl) : "";
}

std::string Connection::serverName() const
{
    const char* name = m_ssl ? SSL_get_servername(m_ssl, TLSEXT_NAMETYPE_host_name) : nullptr;
    return name ? name : "";
}

} // namespace zarn::demo
