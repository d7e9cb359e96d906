// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/keychain_store.h"
#include "platform/linux/keychain/secret_keyring.h"

namespace zarn::linux_backend {

/// Items in the desktop's keyring, over the Secret Service interface. New items go into the
/// collection "default"; items of the product's schema are found in every collection.
///
/// A search finds nothing in a locked collection, so the store asks whether it is locked, and has
/// it unlocked with the service's own prompt, before it reports an item as missing.
class SecretServiceKeychain final : public KeychainStore {
public:
    explicit SecretServiceKeychain(CallContext& call);

    KeychainStatus add(const KeychainItem& item) override;
    KeychainStatus update(const KeychainQuery& query, const Data& secret) override;
    KeychainMatch copyMatching(const KeychainQuery& query) override;
    KeychainStatus erase(const KeychainQuery& query) override;
    KeychainListing list() override;

    /// The first match with its secret and times.
    KeychainStatus find(const KeychainQuery& query, StoredItem& item);

private:
    /// An item of the service: its object path and what it says about itself.
    struct Candidate {
        std::string path;
        StoredItem stored;
    };
    struct Found {
        /// The default collection.
        std::string collection;
        /// In the order of writing.
        std::vector<Candidate> candidates;
    };
    struct Paths {
        std::vector<std::string> unlocked;
        std::vector<std::string> locked;
    };

    /// Every item of the product without a `query`. Success exactly when there is a candidate.
    KeychainStatus search(const KeychainQuery* query, Found& found);
    KeychainStatus searchPaths(const KeychainQuery* query, Paths& paths);
    KeychainStatus unlockedPaths(const KeychainQuery* query, Paths& paths);
    KeychainStatus describe(Candidate& candidate);
    KeychainStatus loadSecret(Candidate& candidate);
    VariantPtr encoded(const Data& secret) const;

    CallContext& m_call;
    SecretKeyring m_keyring;
};

} // namespace zarn::linux_backend
