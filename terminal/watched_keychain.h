// SPDX-License-Identifier: MIT
#pragma once

#include "platform/keychain.h"

#include <mutex>
#include <optional>

namespace zarn {

/// The keychain, with a memory of what failed: the credential store reports a keyring that cannot
/// be read as one without the item. Any thread, except where noted.
class WatchedKeychain final : public Keychain {
public:
    explicit WatchedKeychain(Keychain& keychain)
        : m_keychain(keychain)
    {
    }

    KeychainStatus add(const KeychainItem& item) override { return noted(m_keychain.add(item)); }
    KeychainStatus update(const KeychainQuery& query, const Data& secret) override
    {
        return noted(m_keychain.update(query, secret));
    }
    KeychainMatch copyMatching(const KeychainQuery& query) override
    {
        auto match = m_keychain.copyMatching(query);
        noted(match.status);
        return match;
    }
    std::optional<std::string> messageText(KeychainStatus status) const override
    {
        return m_keychain.messageText(status);
    }
    bool isWaitingForUser() const override { return m_keychain.isWaitingForUser(); }
    void setWaitObserver(WaitObserver observer) override
    {
        m_keychain.setWaitObserver(std::move(observer));
    }

    /// What went wrong last; nothing when every call succeeded or found no item.
    std::optional<KeychainStatus> failure() const
    {
        const std::lock_guard lock(m_mutex);
        return m_failure;
    }

private:
    KeychainStatus noted(KeychainStatus status)
    {
        const std::lock_guard lock(m_mutex);
        if (status != keychain_status::success && status != keychain_status::itemNotFound)
            m_failure = status;
        return status;
    }

    Keychain& m_keychain;
    mutable std::mutex m_mutex;
    std::optional<KeychainStatus> m_failure;
};

/// A keychain without an item, for commands that have no use for secrets: choosing a server must
/// not open the prompt of a locked keyring. Any thread.
class EmptyKeychain final : public Keychain {
public:
    KeychainStatus add(const KeychainItem&) override { return keychain_status::readOnly; }
    KeychainStatus update(const KeychainQuery&, const Data&) override
    {
        return keychain_status::readOnly;
    }
    KeychainMatch copyMatching(const KeychainQuery&) override { return {}; }
    std::optional<std::string> messageText(KeychainStatus) const override { return std::nullopt; }
    bool isWaitingForUser() const override { return false; }
    void setWaitObserver(WaitObserver) override { }
};

} // namespace zarn
