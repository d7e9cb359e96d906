// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/http/curl_url_sessions.h"
#include "tests/support/demo_server.h"
#include "tests/support/test_main_queue.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace zarn::linux_backend {

/// The certificate authority that this test process trusts, through SSL_CERT_FILE. The first call
/// sets the environment (no proxy either) and must come before any other thread runs.
const demo::Certificate& trustedAuthority();

/// The full forms of the robustness tests are asked for (ZARN_LONG=1).
bool longTests();

/// A server on loopback with a good certificate, which answers as the test's handler says and keeps
/// what it was asked.
class LoopbackServer {
public:
    explicit LoopbackServer(demo::Handler handler, demo::ServerOptions options = {});

    /// The root of its address, with 127.0.0.1 unless another host is given.
    std::string https(const std::string& host = "127.0.0.1") const;
    std::string http(const std::string& host = "127.0.0.1") const;
    std::vector<demo::Request> requests() const;
    demo::Traffic traffic() const { return m_server->traffic(); }

private:
    mutable std::mutex m_mutex;
    std::vector<demo::Request> m_requests;
    std::unique_ptr<demo::Server> m_server;
};

/// Options with a certificate for 127.0.0.1, ::1 and localhost, signed by the trusted authority.
demo::ServerOptions goodServerOptions();

/// Notices when the whole machine stands still, so that a test of short times can tell that from a
/// failure of its own. Ends within a moment of its destruction.
class StandstillWatch {
public:
    StandstillWatch();
    ~StandstillWatch();
    StandstillWatch(const StandstillWatch&) = delete;
    StandstillWatch& operator=(const StandstillWatch&) = delete;
    /// The longest time so far in which nothing ran.
    std::chrono::milliseconds longest() const { return m_longest.load(); }

private:
    std::atomic<std::chrono::milliseconds> m_longest{std::chrono::milliseconds(0)};
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_end = false;
    std::thread m_thread;
};

/// Sessions on a main queue of their own, and a way to wait for a reply.
class HttpClient {
public:
    explicit HttpClient(HttpLimits limits = patientLimits());

    /// Limits that no test reaches by accident, not even on a machine that stands still for some
    /// seconds now and then.
    static HttpLimits patientLimits();
    std::optional<HttpResponse> send(const UrlRequest& request, const HttpHeaders& headers = {},
        ServerTrust trust = ServerTrust::Evaluate);
    /// GET of a text that can be formed into a URL.
    std::optional<HttpResponse> get(const std::string& url, const HttpHeaders& headers = {});

    TestMainQueue queue;
    std::vector<std::string> complaints;
    /// Why the last request got no response.
    std::optional<UrlError> error;
    std::unique_ptr<CurlUrlSessions> sessions;
};

} // namespace zarn::linux_backend
