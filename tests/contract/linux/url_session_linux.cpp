// SPDX-License-Identifier: MIT
#include "tests/contract/url_session_contract.h"
#include "tests/platform/linux/http/http_fixture.h"

#include <deque>

namespace zarn {
namespace {

using namespace std::chrono_literals;

// The real thing: libcurl, a TLS server on loopback.
class CurlBackend final : public UrlSessionBackend {
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
    linux_backend::HttpClient m_client;
    linux_backend::LoopbackServer m_server{[this](const demo::Request&) { return nextReply(); }};
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Linux, UrlSessionContract,
    testing::Values(
        UrlSessionBackendFactory{"curl", [] { return std::make_unique<CurlBackend>(); }}),
    [](const auto& backend) { return backend.param.name; });

} // namespace zarn
