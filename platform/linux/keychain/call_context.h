// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <set>
#include <stop_token>
#include <string>

namespace zarn::linux_backend {

/// What the parts of a store have to know about the call that they are working on: when it ends,
/// and where to report trouble and the wait for the user. Shared by all of them, begun anew for
/// each call. The store's thread.
class CallContext {
public:
    using Clock = std::chrono::steady_clock;
    using Report = std::function<void(const std::string& line)>;
    using PromptObserver = std::function<void(bool isWaiting)>;

    struct Limits {
        /// How long the call may take, without the time that it waits for the user.
        std::chrono::milliseconds silence;
        /// How long it may wait for the user to answer the unlock prompt.
        std::chrono::milliseconds prompt{0};
        /// No call waits for a prompt that has been open for this long.
        std::chrono::milliseconds promptAge = std::chrono::minutes(5);
    };

    /// Without a `report`, lines go to standard error. `observer` hears when the call begins to
    /// wait for the user and when it no longer does.
    explicit CallContext(Report report = {}, PromptObserver observer = {});

    /// Begins a call that has to end within the limits, and before as soon as `stop` is requested:
    /// nobody waits for it then.
    void begin(Limits limits, std::stop_token stop = {});
    /// Never negative.
    std::chrono::milliseconds timeLeft() const;
    const std::stop_token& stopToken() const { return m_stop; }
    bool isOver() const;

    /// The call waits for the user to answer a prompt while one of these lives.
    class PromptWait {
    public:
        PromptWait(CallContext& call, Clock::time_point promptOpened);
        ~PromptWait();
        PromptWait(const PromptWait&) = delete;
        PromptWait& operator=(const PromptWait&) = delete;

    private:
        CallContext& m_call;
        const Clock::time_point m_began = Clock::now();
        const Clock::duration m_silenceLeft;
    };

    /// Reports what is wrong with the place where items are kept, each text once in a run. `detail`
    /// (a path or an error name) is added in brackets. Never given a secret.
    void report(const std::string& text, const std::string& detail = {});

private:
    const Report m_report;
    const PromptObserver m_observer;
    std::set<std::string> m_reported;
    Limits m_limits{};
    Clock::time_point m_deadline = Clock::time_point::min();
    std::stop_token m_stop;
};

} // namespace zarn::linux_backend
