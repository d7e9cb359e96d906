// SPDX-License-Identifier: MIT
#include "tests/support/demo_server.h"

#include "tests/support/demo_connection.h"
#include "tests/support/demo_listeners.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <list>
#include <mutex>
#include <thread>

namespace zarn::demo {

namespace {

constexpr std::size_t maximumHeadBytes = std::size_t{32} << 20U;
constexpr std::size_t maximumBodyBytes = std::size_t{64} << 20U;

int protocolVersion(int tls)
{
    switch (tls) {
    case 10:
        return TLS1_VERSION;
    case 11:
        return TLS1_1_VERSION;
    case 12:
        return TLS1_2_VERSION;
    default:
        return TLS1_3_VERSION;
    }
}

using Context = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;

// Takes whatever the test made, weak keys and old protocols included: judging is the client's part.
Context makeContext(const ServerOptions& options, std::string& error)
{
    Context context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    SSL_CTX_set_security_level(context.get(), 0);
    SSL_CTX_set_min_proto_version(context.get(), protocolVersion(options.lowestTls));
    SSL_CTX_set_max_proto_version(context.get(), protocolVersion(options.highestTls));
    SSL_CTX_set_mode(
        context.get(), SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);

    const std::unique_ptr<BIO, decltype(&BIO_free_all)> chain(
        BIO_new_mem_buf(options.certificateChainPem.data(), -1), BIO_free_all);
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> keyText(
        BIO_new_mem_buf(options.keyPem.data(), -1), BIO_free_all);
    bool first = true;
    while (X509* certificate = PEM_read_bio_X509(chain.get(), nullptr, nullptr, nullptr)) {
        if (first)
            SSL_CTX_use_certificate(context.get(), certificate);
        else
            SSL_CTX_add1_chain_cert(context.get(), certificate);
        first = false;
        X509_free(certificate);
    }
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        PEM_read_bio_PrivateKey(keyText.get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
    if (first || !key || SSL_CTX_use_PrivateKey(context.get(), key.get()) != 1) {
        error = "the server certificate or its key cannot be used";
        context.reset();
    }
    ERR_clear_error();
    return context;
}

// Sends the bytes of a reply in order, with its pauses, until all are sent or its limit is reached.
class Sender {
public:
    Sender(Connection& connection, const Reply& reply)
        : m_connection(connection)
        , m_reply(reply)
        , m_left(reply.dropAfter.value_or(UINT64_MAX))
    {
    }

    bool send(std::string_view bytes)
    {
        const bool cut = bytes.size() > m_left;
        if (cut)
            bytes = bytes.substr(0, static_cast<std::size_t>(m_left));
        m_left -= bytes.size();
        return write(bytes) && !cut;
    }

private:
    bool write(std::string_view bytes)
    {
        if (m_reply.byteInterval.count() == 0)
            return m_connection.write(bytes);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if (!m_connection.write(bytes.substr(i, 1))
                || !m_connection.pause(m_reply.byteInterval))
                return false;
        }
        return true;
    }

    Connection& m_connection;
    const Reply& m_reply;
    std::uint64_t m_left;
};

bool sendBody(Sender& sender, const Reply& reply)
{
    if (!sender.send(reply.bodyStart))
        return false;
    // Small pieces are put together, so that a long body is not a system call for each.
    const std::uint64_t perPiece
        = reply.body.empty() ? 1 : std::max<std::uint64_t>(1, 65536 / reply.body.size());
    std::string piece;
    for (std::uint64_t i = 0; i < std::min(perPiece, reply.endless ? perPiece : reply.repeat); ++i)
        piece += reply.body;
    for (std::uint64_t left = reply.repeat; reply.endless || left > 0;) {
        const auto count = reply.endless ? perPiece : std::min(perPiece, left);
        const std::string_view bytes(piece);
        if (!sender.send(bytes.substr(0, static_cast<std::size_t>(count) * reply.body.size())))
            return false;
        left -= reply.endless ? 0 : count;
    }
    return sender.send(reply.bodyEnd);
}

} // namespace

class Server::Implementation {
public:
    Implementation(ServerOptions options, Handler handler)
        : m_options(std::move(options))
        , m_handler(std::move(handler))
    {
    }

    ~Implementation()
    {
        const std::uint64_t one = 1;
        if (m_stop >= 0 && ::write(m_stop, &one, sizeof one) != sizeof one)
            std::terminate();
        if (m_acceptor.joinable())
            m_acceptor.join();
        for (auto& worker : m_workers)
            worker.thread.join();
        closeListeners(m_listeners);
        if (m_stop >= 0)
            ::close(m_stop);
    }

    bool start(std::string& error)
    {
        m_stop = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        if (m_options.https && !(m_context = makeContext(m_options, error)))
            return false;
        if (m_options.https
            && !listenOnAll(m_options.addresses, m_options.httpsPort, true, m_listeners, error))
            return false;
        if (m_options.http
            && !listenOnAll(m_options.addresses, m_options.httpPort, false, m_listeners, error))
            return false;
        m_acceptor = startThread([this] { acceptConnections(); });
        return true;
    }

    std::uint16_t port(bool tls) const
    {
        for (const auto& listener : m_listeners) {
            if (listener.tls == tls)
                return listener.port;
        }
        return 0;
    }

    Traffic traffic() const
    {
        return {
            m_connections.load(), m_handshakes.load(), m_requestBytes.load(), m_requests.load()};
    }

private:
    struct Worker {
        std::thread thread;
        std::atomic<bool> done{false};
    };

    // Signals belong to the thread that waits for them; a write to a closed connection is an error
    // code here and nothing else.
    template <typename Work> static std::thread startThread(Work work)
    {
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &before);
        std::thread thread(std::move(work));
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        return thread;
    }

    void acceptConnections()
    {
        std::vector<pollfd> descriptors = {{m_stop, POLLIN, 0}};
        for (const auto& listener : m_listeners)
            descriptors.push_back({listener.socket, POLLIN, 0});
        for (;;) {
            poll(descriptors.data(), descriptors.size(), -1);
            if (descriptors[0].revents != 0)
                return;
            for (std::size_t i = 1; i < descriptors.size(); ++i) {
                if (descriptors[i].revents != 0)
                    acceptOne(m_listeners[i - 1]);
            }
        }
    }

    void acceptOne(const Listener& listener)
    {
        for (auto worker = m_workers.begin(); worker != m_workers.end();) {
            if (!worker->done) {
                ++worker;
                continue;
            }
            worker->thread.join();
            worker = m_workers.erase(worker);
        }
        const int socket = accept4(listener.socket, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (socket < 0)
            return;
        ++m_connections;
        if (m_workers.size() >= m_options.maximumConnections) {
            ::close(socket);
            return;
        }
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        Worker& worker = m_workers.emplace_back();
        worker.thread = startThread([this, socket, listener, &worker] {
            serve(socket, listener);
            worker.done = true;
        });
    }

    void serve(int socket, const Listener& listener)
    {
        Connection connection(socket, m_stop, listener.tls ? m_context.get() : nullptr,
            Connection::Clock::now() + m_options.connectionLifetime);
        if (!connection.handshake())
            return;
        ++m_handshakes;
        Request request;
        request.port = listener.port;
        request.tlsVersion = connection.tlsVersion();
        request.serverName = connection.serverName();
        if (!receive(connection, request))
            return;
        ++m_requests;
        answer(connection, m_handler(request));
    }

    bool receive(Connection& connection, Request& request)
    {
        char buffer[16384];
        std::size_t headEnd = std::string::npos;
        std::size_t wanted = maximumHeadBytes;
        while (request.raw.size() < wanted) {
            const long count = connection.read(buffer, sizeof buffer);
            if (count <= 0)
                return false;
            m_requestBytes += static_cast<std::size_t>(count);
            const auto seen = request.raw.size();
            request.raw.append(buffer, static_cast<std::size_t>(count));
            if (headEnd != std::string::npos)
                continue;
            headEnd = request.raw.find("\r\n\r\n", seen < 3 ? 0 : seen - 3);
            if (headEnd == std::string::npos)
                continue;
            if (!parseHead(std::string_view(request.raw).substr(0, headEnd), request))
                return false;
            const auto length
                = std::strtoull(request.header("Content-Length").c_str(), nullptr, 10);
            if (length > maximumBodyBytes)
                return false;
            wanted = headEnd + 4 + static_cast<std::size_t>(length);
        }
        if (headEnd == std::string::npos)
            return false;
        request.body = request.raw.substr(headEnd + 4);
        return true;
    }

    void answer(Connection& connection, const Reply& reply)
    {
        if (!connection.pause(reply.delay))
            return;
        Sender sender(connection, reply);
        const bool bodyless = reply.status == 204 || reply.status == 304;
        const bool whole = sender.send(replyHead(reply)) && (bodyless || sendBody(sender, reply));
        if (reply.dropAfter) {
            if (reply.dropQuietly)
                connection.endStream();
            else
                connection.reset();
            return;
        }
        if (reply.stall && !connection.pause(m_options.connectionLifetime, true))
            return;
        if (whole)
            connection.close();
    }

    ServerOptions m_options;
    Handler m_handler;
    Context m_context{nullptr, SSL_CTX_free};
    int m_stop = -1;
    std::vector<Listener> m_listeners;
    std::list<Worker> m_workers;
    std::thread m_acceptor;
    std::atomic<std::size_t> m_connections{0};
    std::atomic<std::size_t> m_handshakes{0};
    std::atomic<std::size_t> m_requestBytes{0};
    std::atomic<std::size_t> m_requests{0};
};

Server::Server(std::unique_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation))
{
}

Server::~Server() = default;

std::unique_ptr<Server> Server::start(
    const ServerOptions& options, Handler handler, std::string& error)
{
    auto implementation = std::make_unique<Implementation>(options, std::move(handler));
    if (!implementation->start(error))
        return nullptr;
    return std::unique_ptr<Server>(new Server(std::move(implementation)));
}

std::uint16_t Server::httpsPort() const
{
    return m_implementation->port(true);
}

std::uint16_t Server::httpPort() const
{
    return m_implementation->port(false);
}

Traffic Server::traffic() const
{
    return m_implementation->traffic();
}

} // namespace zarn::demo
