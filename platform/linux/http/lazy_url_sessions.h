// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/queues/main_queue.h"
#include "platform/url_session.h"

#include <memory>
#include <mutex>

namespace zarn::linux_backend {

/// Sessions whose library is loaded on first use: it and what it pulls in would delay the first
/// paint. Main thread only, except preload().
class LazyUrlSessions final : public UrlSessions {
public:
    /// `mainQueue` outlives the sessions.
    explicit LazyUrlSessions(MainQueue& mainQueue)
        : m_mainQueue(mainQueue)
    {
    }

    /// Loads the module now. Any thread, any number of times.
    void preload();

    std::shared_ptr<UrlSession> makeSession(
        const UrlSessionConfiguration& configuration, UrlSessionDelegate& delegate) override;
    /// No reply is ever cached, so this does not load the library.
    void removeAllCachedResponses() override { }

private:
    MainQueue& m_mainQueue;
    std::once_flag m_loaded;
    std::unique_ptr<UrlSessions> m_sessions;
};

} // namespace zarn::linux_backend
