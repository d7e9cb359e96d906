// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/queues/main_queue.h"
#include "platform/url_session.h"

#include <memory>
#include <mutex>
#include <string>

namespace zarn::linux_backend {

/// Sessions whose library is loaded on first use: it and what it pulls in would delay the first
/// paint. Without the module every task ends without a response, and one line on standard error
/// says why.
class LazyUrlSessions final : public UrlSessions {
public:
    /// `mainQueue` outlives the sessions.
    explicit LazyUrlSessions(MainQueue& mainQueue);
    /// For tests: another module file.
    LazyUrlSessions(MainQueue& mainQueue, std::string moduleFile);
    ~LazyUrlSessions() override;

    /// Loads the module now. Any thread, any number of times.
    void preload();

    std::shared_ptr<UrlSession> makeSession(
        const UrlSessionConfiguration& configuration, UrlSessionDelegate& delegate) override;
    /// Nothing is ever kept, so this does not load anything.
    void removeAllCachedResponses() override { }

private:
    MainQueue& m_mainQueue;
    const std::string m_moduleFile;
    std::once_flag m_loaded;
    std::unique_ptr<UrlSessions> m_sessions;
};

} // namespace zarn::linux_backend
