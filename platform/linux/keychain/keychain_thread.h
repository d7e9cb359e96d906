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
        /// How long a call of the store may take.
        std::chrono::milliseconds store{9400};
        /// How long the caller waits, whatever the store does.
        std::chrono::milliseconds caller{9700};
    };

    KeychainThread(
        MainQueue& mainQueue, OpenStore openStore, Limits limits, CallContext::Report report = {});
    KeychainThread(MainQueue& mainQueue, OpenStore openStore)
        : KeychainThread(mainQueue, std::move(openStore), Limits{})
    {
    }
    /// Waits for a call that is under way, within its limit.
    ~KeychainThread() override;
    KeychainThread(const KeychainThread&) = delete;
    KeychainThread& operator=(const KeychainThread&) = delete;

    /// Opens the store in the background, so that the first call need not wait for it.
    void preload();

    KeychainStatus add(const KeychainItem& item) override;
    KeychainStatus update(const KeychainQuery& query, const Data& secret) override;
    KeychainMatch copyMatching(const KeychainQuery& query) override;
    std::optional<std::string> messageText(KeychainStatus status) const override;

private:
    struct Request;
    using Work = std::function<KeychainMatch(KeychainStore&)>;

    KeychainMatch run(Work work);
    void submit(const std::shared_ptr<Request>& request);
    void serve();
    void perform(Request& request);

    MainQueue& m_mainQueue;
    const OpenStore m_openStore;
    const Limits m_limits;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::shared_ptr<Request>> m_requests;
    bool m_stopping = false;
    // Of the keychain's thread.
    CallContext m_call;
    bool m_isOpened = false;
    std::unique_ptr<KeychainStore> m_store;
    std::thread m_thread;
};

/// Opens a store through the module zarn-keychain, which is loaded then (see moduleFunction).
KeychainThread::OpenStore moduleStore(KeychainOptions options);

} // namespace zarn::linux_backend
