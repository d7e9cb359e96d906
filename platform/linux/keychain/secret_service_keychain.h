// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/secret_keyring.h"

namespace zarn::linux_backend {

/// Items in the desktop's keyring, over the Secret Service interface. New items go into the
/// collection "default"; items of the product's schema are found in every collection.
///
/// A locked collection answers a search as if it were empty, so its state is asked for before
/// anything is said to be missing, and it is unlocked with the service's own prompt.
class SecretServiceKeychain final : public KeychainStore {
public:
    explicit SecretServiceKeychain(KeychainReports& reports);
    ~SecretServiceKeychain() override;

    KeychainStatus add(const KeychainItem& item, Deadline deadline) override;
    KeychainStatus update(
        const KeychainQuery& query, const Data& secret, Deadline deadline) override;
    KeychainMatch copyMatching(const KeychainQuery& query, Deadline deadline) override;
    KeychainStatus erase(const KeychainQuery& query, Deadline deadline) override;
    KeychainListing list(Deadline deadline) override;

    /// The first match with its secret and times.
    KeychainStatus find(const KeychainQuery& query, StoredItem& found, Deadline deadline);

private:
    /// An item of the service: where it is and what it says about itself.
    struct Candidate {
        std::string path;
        StoredItem stored;
    };
    struct Paths {
        std::vector<std::string> unlocked;
        std::vector<std::string> locked;
    };

    KeychainStatus searchPaths(const KeychainQuery* query, Paths& paths, Deadline deadline);
    KeychainStatus search(
        const KeychainQuery* query, std::vector<Candidate>& candidates, Deadline deadline);
    KeychainStatus describe(Candidate& candidate, Deadline deadline);
    KeychainStatus loadSecret(Candidate& candidate, Deadline deadline);
    KeychainStatus create(
        const std::string& collection, const KeychainItem& item, Deadline deadline);
    /// Waits for the prompt whose path a reply holds, when the service wants to show one.
    KeychainStatus promptOutcome(
        const SecretConnection::Reply& reply, gsize index, Deadline deadline);
    VariantPtr encoded(const Data& secret) const;

    KeychainReports& m_reports;
    SecretKeyring m_keyring;
};

} // namespace zarn::linux_backend
