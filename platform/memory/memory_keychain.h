// SPDX-License-Identifier: MIT
#pragma once

#include "platform/keychain.h"

#include <atomic>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace zarn::memory {

/// A keychain in memory that keeps the order of writing. Records calls as "add ...", "update ..."
/// and "copy ...".
class MemoryKeychain final : public Keychain {
public:
    explicit MemoryKeychain(std::vector<std::string>& events)
        : m_events(events)
    {
    }

    KeychainStatus add(const KeychainItem& item) override;
    KeychainStatus update(const KeychainQuery& query, const Data& secret) override;
    KeychainMatch copyMatching(const KeychainQuery& query) override;
    std::optional<std::string> messageText(KeychainStatus status) const override;
    bool isWaitingForUser() const override { return m_isWaiting; }
    void setWaitObserver(WaitObserver observer) override { m_observer = std::move(observer); }
    /// The unlock prompt opens or is answered.
    void setWaitingForUser(bool isWaiting)
    {
        if (m_isWaiting.exchange(isWaiting) != isWaiting && m_observer)
            m_observer(isWaiting);
    }

    std::vector<KeychainItem> items;
    std::vector<KeychainQuery> queries;
    /// When set, the call fails with this status and changes nothing.
    KeychainStatus addStatus = keychain_status::success;
    KeychainStatus updateStatus = keychain_status::success;
    KeychainStatus copyStatus = keychain_status::success;

private:
    KeychainItem* firstMatch(const KeychainQuery& query);

    std::vector<std::string>& m_events;
    std::atomic<bool> m_isWaiting = false;
    WaitObserver m_observer;
    mutable std::mutex m_mutex;
};

} // namespace zarn::memory
