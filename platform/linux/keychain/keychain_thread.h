// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/call_context.h"
#include "platform/linux/keychain/keychain_store.h"
#include "platform/linux/queues/main_queue.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

namespace zarn::linux_backend {

/// The keychain that the program holds: a thread that runs every call, one at a time, so that each
/// call returns to its caller in time. The thread starts, and opens the store, with the first call.
/// Any thread; on the main thread the window goes on painting meanwhile.
class KeychainThread final : public Keychain {
public:
    /// Runs on the keychain's thread, once; never null.
    using OpenStore = std::function<std::unique_ptr<KeychainStore>(CallContext&)>;
    struct Limits {
        std::chrono::milliseconds open = std::chrono::seconds(5);
        /// For a call from the main thread, and from any other.
        CallContext::Limits main{std::chrono::milliseconds(9400), std::chrono::seconds(60)};
        CallContext::Limits other{std::chrono::milliseconds(9400), std::chrono::minutes(5)};
        /// How much longer the caller waits, whatever the store does.
        std::chrono::milliseconds grace{300};
        /// Once the program is ending, all calls together may be silent for this long.
        std::chrono::milliseconds ending{9000};
    };

    KeychainThread(
        MainQueue& mainQueue, OpenStore openStore, Limits limits, CallContext::Report report = {});
    KeychainThread(MainQueue& mainQueue, OpenStore openStore)
        : KeychainThread(mainQueue, std::move(openStore), Limits{})
    {
    }
    /// No call may be waiting. Work that is still running is given up.
    ~KeychainThread() override;
    KeychainThread(const KeychainThread&) = delete;
    KeychainThread& operator=(const KeychainThread&) = delete;

    /// Opens the store in the background, so that the first call need not wait for it.
    void preload();
    /// To be called when the program ends: from then on one limit holds for all calls together, so
    /// that the last of them fails in time to be logged. Main thread.
    void announceEnding();

    KeychainStatus add(const KeychainItem& item) override;
    KeychainStatus update(const KeychainQuery& query, const Data& secret) override;
    KeychainMatch copyMatching(const KeychainQuery& query) override;
    std::optional<std::string> messageText(KeychainStatus status) const override;
    bool isWaitingForUser() const override;
    void setWaitObserver(WaitObserver observer) override;

private:
    using Clock = CallContext::Clock;
    struct Request;
    using Work = std::function<KeychainMatch(KeychainStore&)>;
    /// A moment on two clocks: what is left of the limits runs on one while a call waits for the
    /// user, and on the other while none does.
    struct Moment {
        Clock::time_point time;
        std::chrono::milliseconds promptTime;
    };

    KeychainMatch run(Work work);
    void wait(const Request& request);
    void submit(const std::shared_ptr<Request>& request);
    void serve();
    void perform(Request& request);
    void promptWaitChanged(bool isWaiting);
    void reportPromptWait();
    // With the mutex held:
    Moment now() const;
    CallContext::Limits left(const Request& request) const;
    std::chrono::milliseconds timeLeft(const Request& request) const;

    MainQueue& m_mainQueue;
    const OpenStore m_openStore;
    const Limits m_limits;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::shared_ptr<Request>> m_requests;
    std::stop_source m_end;
    /// Since when a call has been waiting for the user, and for how long calls did before.
    std::optional<Clock::time_point> m_promptSince;
    std::chrono::milliseconds m_promptTime{0};
    std::optional<Moment> m_endingSince;
    // Of the main thread.
    WaitObserver m_waitObserver;
    bool m_reportedWait = false;
    // Of the keychain's thread.
    CallContext m_call;
    bool m_isOpened = false;
    std::unique_ptr<KeychainStore> m_store;
    std::thread m_thread;
};

/// Opens a store through the module zarn-keychain, which is loaded then (see moduleFunction).
KeychainThread::OpenStore moduleStore(KeychainOptions options);

} // namespace zarn::linux_backend
