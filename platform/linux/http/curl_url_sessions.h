// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/http/http_limits.h"
#include "platform/linux/queues/main_queue.h"
#include "platform/url_session.h"

#include <functional>
#include <memory>
#include <string_view>

namespace zarn::linux_backend {

/// Sessions on libcurl. Each task runs on a thread of its own and comes back through the main
/// queue, which outlives the sessions. Main thread only, but made on any thread.
///
/// Where platform/url_session.h leaves a choice, the safer one is taken: a URL with a user
/// name, a header that belongs to the transport or one with a control character ends without a
/// response; a body of any kind counts as credentials; a session that accepts any certificate
/// refuses to send credentials at all; http never goes through a proxy. There is no cache.
class CurlUrlSessions final : public UrlSessions {
public:
    /// Writes one line for the user; by default to standard error. Main thread.
    using Complain = std::function<void(std::string_view line)>;

    explicit CurlUrlSessions(MainQueue& mainQueue, HttpLimits limits = {}, Complain complain = {});
    ~CurlUrlSessions() override;
    CurlUrlSessions(const CurlUrlSessions&) = delete;
    CurlUrlSessions& operator=(const CurlUrlSessions&) = delete;

    std::shared_ptr<UrlSession> makeSession(
        const UrlSessionConfiguration& configuration, UrlSessionDelegate& delegate) override;
    /// Does nothing: no reply is ever kept.
    void removeAllCachedResponses() override { }

private:
    class Tasks;
    class Session;
    std::shared_ptr<Tasks> m_tasks;
};

} // namespace zarn::linux_backend
