// SPDX-License-Identifier: MIT
#include "tests/platform/linux/http/http_fixture.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace zarn::linux_backend {

namespace {

using namespace std::chrono_literals;

struct Authority {
    Authority()
    {
        for (const char* name : {"http_proxy", "HTTP_PROXY", "https_proxy", "HTTPS_PROXY",
                 "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY", "SSL_CERT_DIR"})
            unsetenv(name);
        std::string pattern = std::filesystem::temp_directory_path() / "zarn-authority-XXXXXX";
        const int descriptor = mkstemp(pattern.data());
        if (descriptor < 0)
            throw std::runtime_error("no temporary file");
        close(descriptor);
        file = pattern;
        std::ofstream(file) << certificate.certificatePem;
        setenv("SSL_CERT_FILE", file.c_str(), 1);
    }
    ~Authority() { std::filesystem::remove(file); }
    Authority(const Authority&) = delete;
    Authority& operator=(const Authority&) = delete;

    demo::Certificate certificate = demo::makeCertificate(demo::authorityOptions("Test authority"));
    std::filesystem::path file;
};

class FixedTrust final : public UrlSessionDelegate {
public:
    explicit FixedTrust(ServerTrust disposition)
        : m_disposition(disposition)
    {
    }
    ServerTrust serverTrustDisposition() override { return m_disposition; }

private:
    ServerTrust m_disposition;
};

} // namespace

const demo::Certificate& trustedAuthority()
{
    static const Authority authority;
    return authority.certificate;
}

bool longTests()
{
    const char* value = std::getenv("ZARN_LONG");
    return value && std::string_view(value) == "1";
}

demo::ServerOptions goodServerOptions()
{
    static const demo::Certificate certificate = [] {
        demo::CertificateOptions options;
        options.names = {"127.0.0.1", "::1", "localhost"};
        return demo::makeCertificate(options, &trustedAuthority());
    }();
    demo::ServerOptions options;
    options.certificateChainPem = certificate.certificatePem;
    options.keyPem = certificate.keyPem;
    return options;
}

LoopbackServer::LoopbackServer(demo::Handler handler, demo::ServerOptions options)
{
    if (options.keyPem.empty()) {
        const auto good = goodServerOptions();
        options.certificateChainPem = good.certificateChainPem;
        options.keyPem = good.keyPem;
    }
    std::string error;
    m_server = demo::Server::start(
        options,
        [this, handler = std::move(handler)](const demo::Request& request) {
            {
                const std::lock_guard lock(m_mutex);
                m_requests.push_back(request);
            }
            return handler(request);
        },
        error);
    if (!m_server)
        throw std::runtime_error(error);
}

std::string LoopbackServer::https(const std::string& host) const
{
    return "https://" + host + ":" + std::to_string(m_server->httpsPort());
}

std::string LoopbackServer::http(const std::string& host) const
{
    return "http://" + host + ":" + std::to_string(m_server->httpPort());
}

std::vector<demo::Request> LoopbackServer::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

HttpClient::HttpClient(HttpLimits limits)
{
    trustedAuthority();
    sessions = std::make_unique<CurlUrlSessions>(
        queue, limits, [this](std::string_view line) { complaints.emplace_back(line); });
}

HttpLimits HttpClient::patientLimits()
{
    HttpLimits limits;
    limits.total = 100s;
    return limits;
}

StandstillWatch::StandstillWatch()
    : m_thread([this] {
        std::unique_lock lock(m_mutex);
        auto last = std::chrono::steady_clock::now();
        while (!m_end) {
            m_wake.wait_for(lock, 10ms);
            const auto now = std::chrono::steady_clock::now();
            const auto gap = std::chrono::duration_cast<std::chrono::milliseconds>(now - last);
            m_longest = std::max(m_longest.load(), gap);
            last = now;
        }
    })
{
}

StandstillWatch::~StandstillWatch()
{
    {
        const std::lock_guard lock(m_mutex);
        m_end = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

std::optional<HttpResponse> HttpClient::send(
    const UrlRequest& request, const HttpHeaders& headers, ServerTrust trust)
{
    FixedTrust delegate(trust);
    std::optional<HttpResponse> result;
    error.reset();
    bool done = false;
    sessions->makeSession({UrlSessionConfiguration::Storage::Ephemeral, headers}, delegate)
        ->dataTask(request, [&](const UrlReply& reply) {
            if (reply)
                result = reply.value();
            else
                error = reply.error();
            done = true;
        });
    if (!queue.runUntil([&] { return done; }, 110s))
        throw std::runtime_error("a request never ended");
    return result;
}

std::optional<HttpResponse> HttpClient::get(const std::string& url, const HttpHeaders& headers)
{
    const auto formed = Url::fromText(url);
    if (!formed)
        throw std::runtime_error("not a URL: " + url);
    return send({*formed}, headers);
}

} // namespace zarn::linux_backend
