// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/file_keychain.h"
#include "platform/linux/keychain/secret_service_keychain.h"

namespace zarn::linux_backend {

/// The keyring service, together with the file keychain that an earlier run without such a service
/// may have left behind. Before each call, items move over from the file: each is stored, read back
/// and compared, and only then taken out of the file. While an item could not be moved, a look-up
/// that finds nothing in the keyring continues in the file.
class MovingKeychain final : public KeychainStore {
public:
    /// Without `moves`, items stay where they are and are only looked up.
    MovingKeychain(std::unique_ptr<SecretServiceKeychain> service,
        std::unique_ptr<FileKeychain> file, bool moves, CallContext& call);

    KeychainStatus add(const KeychainItem& item) override;
    KeychainStatus update(const KeychainQuery& query, const Data& secret) override;
    KeychainMatch copyMatching(const KeychainQuery& query) override;
    KeychainStatus erase(const KeychainQuery& query) override;
    KeychainListing list() override;

private:
    void moveAll();
    /// Stores one item in the keyring, unless the keyring has a newer secret for it. `moved` is set
    /// once the keyring is seen to hold it, so that the file's copy can go.
    KeychainStatus moveOne(const StoredItem& stored, bool& moved);

    std::unique_ptr<SecretServiceKeychain> m_service;
    std::unique_ptr<FileKeychain> m_file;
    const bool m_moves;
    CallContext& m_call;
};

} // namespace zarn::linux_backend
