// SPDX-License-Identifier: MIT
#include "tests/contract/url_session_contract.h"
#include "tests/platform/linux/http/http_fixture.h"
#include "tests/support/demo_certificates.h"

#include <cstdlib>
#include <deque>
#include <memory>

namespace zarn::linux_backend {
namespace {

using namespace std::chrono_literals;

/// libcurl, a TLS server on loopback.
class LinuxUrlSessionBackend final : public UrlSessionBackend {
public:
    UrlSessions& sessions() override { return *m_client.sessions; }
    void destroySessions() override { m_client.sessions.reset(); }
    Url url(const std::string& path) override { return *Url::fromText(m_server.https() + path); }

    void willReply(int status, const std::string& body) override
    {
        demo::Reply reply;
        reply.status = status;
        reply.body = body;
        script(reply);
    }

    void willNotRespond() override
    {
        demo::Reply reply;
        reply.dropAfter = 0;
        script(reply);
    }

    UrlRequest failing(UrlErrorCode code) override
    {
        unsetenv("https_proxy");
        return {*Url::fromText(failingAddress(code) + "/s3cret?s3cret"), "POST", "s3cret", 1s};
    }

    UrlRequest redirecting(UrlErrorCode code) override
    {
        demo::Reply reply;
        reply.status = 307;
        switch (code) {
        case UrlErrorCode::RedirectElsewhere:
            reply.headers = {{"Location", "https://other.example:8443/s3cret"}};
            break;
        case UrlErrorCode::RedirectToHttp:
            reply.headers = {{"Location", m_server.http() + "/s3cret"}};
            break;
        case UrlErrorCode::TooManyRedirects:
            reply.headers = {{"Location", "/s3cret"}};
            break;
        default:
            reply.headers = {{"Location", "gopher://s3cret"}};
        }
        const int hops = code == UrlErrorCode::TooManyRedirects ? 17 : 1;
        for (int i = 0; i < hops; ++i)
            script(reply);
        return {url("/"), "POST", "s3cret"};
    }

    std::vector<SeenRequest> seen() override
    {
        std::vector<SeenRequest> seen;
        for (const auto& request : m_server.requests()) {
            SeenRequest plain{request.method, m_server.https() + request.target, {}, request.body};
            for (const auto& header : request.headers) {
                if (header.first != "Host" && header.first != "Content-Length")
                    plain.headers.push_back(header);
            }
            seen.push_back(plain);
        }
        return seen;
    }

    bool runUntil(const std::function<bool()>& done) override
    {
        return m_client.queue.runUntil(done, m_client.sessions ? 110s : 200ms);
    }

private:
    // Starts what the failure takes and returns the root of its address.
    std::string failingAddress(UrlErrorCode code)
    {
        demo::Reply reply;
        switch (code) {
        case UrlErrorCode::BadUrl:
            return "ftp://127.0.0.1";
        case UrlErrorCode::InsecureHttp:
            return "http://zarn.example";
        case UrlErrorCode::HostNotFound:
            return "https://zarn.invalid";
        case UrlErrorCode::ConnectionRefused:
            return closedAddress();
        case UrlErrorCode::CannotConnect:
            return "https://255.255.255.255";
        case UrlErrorCode::ProxyFailed:
            setenv("https_proxy", "http://proxy.invalid:3128", 1);
            return "https://zarn.example";
        case UrlErrorCode::TimedOut:
            reply.raw = "HTTP/1.1 200";
            reply.stall = true;
            break;
        case UrlErrorCode::TlsFailed: {
            auto old = goodServerOptions();
            old.lowestTls = 10;
            old.highestTls = 11;
            return otherAddress(old);
        }
        case UrlErrorCode::ConnectionLost:
            reply.dropAfter = 0;
            break;
        case UrlErrorCode::BadReply:
            reply.raw = "220 mail.example ready\r\n";
            break;
        case UrlErrorCode::TooLarge:
            reply.body = "x";
            reply.endless = true;
            break;
        case UrlErrorCode::BadRequest:
        case UrlErrorCode::CredentialsWithheld:
            return m_server.https();
        default:
            return certificateAddress(code);
        }
        script(reply);
        return m_server.https();
    }

    static std::string closedAddress()
    {
        const LoopbackServer server([](const demo::Request&) { return demo::Reply{}; });
        return server.https();
    }

    // Of a server whose certificate is refused for this reason alone.
    std::string certificateAddress(UrlErrorCode code)
    {
        demo::CertificateOptions options;
        options.names = {"127.0.0.1"};
        if (code == UrlErrorCode::WrongName)
            options.names = {"other.example"};
        else if (code == UrlErrorCode::CertificateExpired)
            options.notAfter = -1min;
        else if (code == UrlErrorCode::CertificateNotYetValid)
            options.notBefore = 1h;
        else if (code == UrlErrorCode::CertificateRefused)
            options.key = demo::KeyKind::Rsa1024;
        const auto certificate = demo::makeCertificate(
            options, code == UrlErrorCode::UnknownAuthority ? nullptr : &trustedAuthority());
        demo::ServerOptions server;
        server.certificateChainPem = certificate.certificatePem;
        server.keyPem = certificate.keyPem;
        return otherAddress(server);
    }

    std::string otherAddress(const demo::ServerOptions& options)
    {
        m_others.push_back(std::make_unique<LoopbackServer>(
            [](const demo::Request&) { return demo::Reply{}; }, options));
        return m_others.back()->https();
    }

    void script(const demo::Reply& reply)
    {
        const std::lock_guard lock(m_mutex);
        m_replies.push_back(reply);
    }

    demo::Reply nextReply()
    {
        const std::lock_guard lock(m_mutex);
        demo::Reply reply;
        reply.status = 404;
        if (!m_replies.empty()) {
            reply = m_replies.front();
            m_replies.pop_front();
        }
        return reply;
    }

    std::mutex m_mutex;
    std::deque<demo::Reply> m_replies;
    HttpClient m_client;
    LoopbackServer m_server{[this](const demo::Request&) { return nextReply(); }};
    std::vector<std::unique_ptr<LoopbackServer>> m_others;
};

} // namespace
} // namespace zarn::linux_backend

namespace zarn {

std::unique_ptr<UrlSessionBackend> makeUrlSessionBackend()
{
    return std::make_unique<linux_backend::LinuxUrlSessionBackend>();
}

} // namespace zarn
