// SPDX-License-Identifier: MIT
#include "platform/memory/memory_url_sessions.h"

namespace zarn::memory {

class MemoryUrlSession final : public UrlSession {
public:
    MemoryUrlSession(MemoryUrlSessions& owner, UrlSessionConfiguration configuration,
        UrlSessionDelegate& delegate)
        : m_owner(owner)
        , m_configuration(std::move(configuration))
        , m_delegate(delegate)
        , m_trust(delegate.serverTrustDisposition())
    {
    }

    void dataTask(const UrlRequest& request, DataTaskCompletion completion) override
    {
        if (m_invalidated)
            return;
        m_owner.m_events.push_back("request " + request.method + " " + request.url.text());
        m_owner.requests.push_back(
            {request.method, request.url.text(), m_configuration.additionalHeaders, request.body,
                request.timeout, m_configuration.storage, m_trust, &m_delegate});
        m_owner.m_running.push_back(std::move(completion));
    }

    void finishTasksAndInvalidate() override
    {
        m_owner.sessionsInvalidated += m_invalidated ? 0 : 1;
        m_invalidated = true;
    }

private:
    MemoryUrlSessions& m_owner;
    UrlSessionConfiguration m_configuration;
    UrlSessionDelegate& m_delegate;
    ServerTrust m_trust;
    bool m_invalidated = false;
};

std::shared_ptr<UrlSession> MemoryUrlSessions::makeSession(
    const UrlSessionConfiguration& configuration, UrlSessionDelegate& delegate)
{
    ++sessionsMade;
    return std::make_shared<MemoryUrlSession>(*this, configuration, delegate);
}

void MemoryUrlSessions::removeAllCachedResponses()
{
    ++cacheClears;
    m_events.emplace_back("empty the URL cache");
}

bool MemoryUrlSessions::deliver()
{
    if (m_running.empty())
        return false;
    const auto completion = std::move(m_running.front());
    m_running.pop_front();
    if (m_replies.empty())
        replyNothing();
    const auto reply = std::move(m_replies.front());
    m_replies.pop_front();
    completion(reply);
    return true;
}

} // namespace zarn::memory
