// SPDX-License-Identifier: MIT
#include "platform/linux/http/lazy_url_sessions.h"

#include "base/warn.h"
#include "platform/linux/files/module.h"
#include "platform/linux/http/http_module.h"

#include <cstdint>
#include <map>

namespace zarn::linux_backend {

namespace {

/// Takes the place of the module's sessions where it is missing.
class NoUrlSessions final : public UrlSessions {
public:
    explicit NoUrlSessions(MainQueue& mainQueue)
        : m_state(std::make_shared<State>(mainQueue))
    {
    }

    std::shared_ptr<UrlSession> makeSession(
        const UrlSessionConfiguration&, UrlSessionDelegate& delegate) override
    {
        delegate.serverTrustDisposition();
        return std::make_shared<Session>(m_state);
    }
    void removeAllCachedResponses() override { }

private:
    // Owns the completions, so that they end here and not in a queue that outlives us.
    struct State {
        explicit State(MainQueue& queue)
            : mainQueue(queue)
        {
        }
        MainQueue& mainQueue;
        std::map<std::uint64_t, DataTaskCompletion> waiting;
        std::uint64_t nextId = 0;
    };

    class Session final : public UrlSession {
    public:
        explicit Session(std::weak_ptr<State> state)
            : m_state(std::move(state))
        {
        }

        void dataTask(const UrlRequest&, DataTaskCompletion completion) override
        {
            const auto state = m_state.lock();
            if (!state || m_invalidated)
                return;
            const auto id = state->nextId++;
            state->waiting[id] = std::move(completion);
            state->mainQueue.post([weak = m_state, id] {
                if (const auto alive = weak.lock())
                    alive->waiting.extract(id).mapped()(std::nullopt);
            });
        }
        void finishTasksAndInvalidate() override { m_invalidated = true; }

    private:
        std::weak_ptr<State> m_state;
        bool m_invalidated = false;
    };

    std::shared_ptr<State> m_state;
};

} // namespace

LazyUrlSessions::LazyUrlSessions(MainQueue& mainQueue)
    : LazyUrlSessions(mainQueue, httpModuleFile)
{
}

LazyUrlSessions::LazyUrlSessions(MainQueue& mainQueue, std::string moduleFile)
    : m_mainQueue(mainQueue)
    , m_moduleFile(std::move(moduleFile))
{
}

LazyUrlSessions::~LazyUrlSessions() = default;

void LazyUrlSessions::preload()
{
    std::call_once(m_loaded, [this] {
        const auto function = loadModuleFunction(m_moduleFile, makeUrlSessionsSymbol);
        if (function) {
            auto* make = reinterpret_cast<MakeUrlSessions*>(function.value());
            m_sessions.reset(make(&m_mainQueue));
            return;
        }
        warn("no network: " + function.error().message);
        m_sessions = std::make_unique<NoUrlSessions>(m_mainQueue);
    });
}

std::shared_ptr<UrlSession> LazyUrlSessions::makeSession(
    const UrlSessionConfiguration& configuration, UrlSessionDelegate& delegate)
{
    preload();
    return m_sessions->makeSession(configuration, delegate);
}

} // namespace zarn::linux_backend
