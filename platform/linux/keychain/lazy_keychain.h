// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/keychain_store.h"
#include "platform/linux/queues/main_queue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace zarn::linux_backend {

/// The keychain that the program holds. It costs nothing until it is used: a thread of its own
/// opens the store on the first call and runs every call, one at a time, so that whoever calls can
/// be answered in time. Any thread; on the main thread the window goes on painting meanwhile.
class LazyKeychain final : public Keychain {
public:
    /// Runs on the keychain's thread, once; null when no store can be had.
    using OpenStore = std::function<std::unique_ptr<KeychainStore>()>;
    struct Limits {
        /// A store has to answer by then,
        std::chrono::milliseconds store{9400};
        /// and the caller is answered by then, whatever the store does.
        std::chrono::milliseconds answer{9700};
    };

    LazyKeychain(MainQueue& mainQueue, OpenStore openStore, Limits limits);
    LazyKeychain(MainQueue& mainQueue, OpenStore openStore)
        : LazyKeychain(mainQueue, std::move(openStore), Limits{})
    {
    }
    /// Waits for a call that is under way, within its limit.
    ~LazyKeychain() override;
    LazyKeychain(const LazyKeychain&) = delete;
    LazyKeychain& operator=(const LazyKeychain&) = delete;

    /// Opens the store in the background, so that the first call need not wait for it.
    void preload();

    KeychainStatus add(const KeychainItem& item) override;
    KeychainStatus update(const KeychainQuery& query, const Data& secret) override;
    KeychainMatch copyMatching(const KeychainQuery& query) override;
    std::optional<std::string> messageText(KeychainStatus status) const override;

private:
    struct Request;
    struct State;
    using Work = std::function<KeychainMatch(KeychainStore&, Deadline)>;

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
    bool m_isOpened = false;
    std::unique_ptr<KeychainStore> m_store;
    std::thread m_thread;
};

/// Opens a store through the module zarn-keychain, which is loaded then. A module that cannot be
/// loaded is told in one line on standard error.
LazyKeychain::OpenStore moduleStore(KeychainOptions options);

} // namespace zarn::linux_backend
