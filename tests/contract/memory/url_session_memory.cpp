// SPDX-License-Identifier: MIT
#include "platform/memory/memory_url_sessions.h"
#include "tests/contract/url_session_contract.h"

namespace zarn {
namespace {

class MemoryBackend final : public UrlSessionBackend {
public:
    UrlSessions& sessions() override { return *m_sessions; }
    void destroySessions() override { m_sessions.reset(); }
    Url url(const std::string& path) override
    {
        return *Url::fromText("https://zarn.example" + path);
    }
    void willReply(int status, const std::string& body) override
    {
        m_sessions->reply(status, body);
    }
    void willNotRespond() override { m_sessions->replyNothing(); }

    std::vector<SeenRequest> seen() override
    {
        std::vector<SeenRequest> seen;
        for (const auto& request : m_sessions->requests)
            seen.push_back(
                {request.method, request.url, request.headers, request.body.value_or("")});
        return seen;
    }

    bool runUntil(const std::function<bool()>& done) override
    {
        while (!done()) {
            if (!m_sessions || !m_sessions->deliver())
                return done();
        }
        return true;
    }

private:
    std::vector<std::string> m_events;
    std::unique_ptr<memory::MemoryUrlSessions> m_sessions
        = std::make_unique<memory::MemoryUrlSessions>(m_events);
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Memory, UrlSessionContract,
    testing::Values(
        UrlSessionBackendFactory{"memory", [] { return std::make_unique<MemoryBackend>(); }}),
    [](const auto& backend) { return backend.param.name; });

} // namespace zarn
