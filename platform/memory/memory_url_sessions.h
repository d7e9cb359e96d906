// SPDX-License-Identifier: MIT
#pragma once

#include "platform/url_session.h"

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace zarn::memory {

/// What a session was asked to send.
struct RecordedRequest {
    std::string method;
    std::string url;
    HttpHeaders headers;
    std::optional<std::string> body;
    std::chrono::seconds timeout{};
    UrlSessionConfiguration::Storage storage = UrlSessionConfiguration::Storage::Default;
    ServerTrust trust = ServerTrust::Evaluate;
    const UrlSessionDelegate* delegate = nullptr;
};

/// Sessions without a network: replies are scripted, and delivered when the test says so.
class MemoryUrlSessions final : public UrlSessions {
public:
    explicit MemoryUrlSessions(std::vector<std::string>& events)
        : m_events(events)
    {
    }

    std::shared_ptr<UrlSession> makeSession(
        const UrlSessionConfiguration& configuration, UrlSessionDelegate& delegate) override;
    void removeAllCachedResponses() override;

    /// The reply to the next request without one; in order. Without a script the connection is
    /// lost.
    void reply(int status, std::string body)
    {
        m_replies.emplace_back(HttpResponse{status, std::move(body)});
    }
    void redirectNowhere(int status, UrlError refused)
    {
        m_replies.emplace_back(HttpResponse{status, "", std::move(refused)});
    }
    void fail(UrlError error) { m_replies.emplace_back(std::move(error)); }
    void replyNothing() { fail({UrlErrorCode::ConnectionLost, "the connection was lost"}); }
    /// Runs the completion of the oldest running task; false when there is none.
    bool deliver();
    /// Delivers until no task runs, tasks started meanwhile included.
    void deliverAll()
    {
        while (deliver()) { }
    }
    std::size_t running() const { return m_running.size(); }

    std::vector<RecordedRequest> requests;
    int cacheClears = 0;
    int sessionsMade = 0;
    int sessionsInvalidated = 0;

private:
    friend class MemoryUrlSession;
    std::vector<std::string>& m_events;
    std::deque<UrlReply> m_replies;
    std::deque<DataTaskCompletion> m_running;
};

} // namespace zarn::memory
