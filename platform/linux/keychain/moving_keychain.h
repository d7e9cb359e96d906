// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/file_keychain.h"
#include "platform/linux/keychain/secret_service_keychain.h"

namespace zarn::linux_backend {

/// The keyring service, after items have been left in the file keychain by a run that had no such
/// service. They move over before the first answer: each is stored, read back and compared, and
/// only when all are there does the file go. While one could not be moved, look-ups that find
/// nothing in the keyring go on to the file.
class MovingKeychain final : public KeychainStore {
public:
    /// Without `moves`, items stay where they are and are only looked up.
    MovingKeychain(std::unique_ptr<SecretServiceKeychain> service,
        std::unique_ptr<FileKeychain> file, bool moves, KeychainReports& reports);

    KeychainStatus add(const KeychainItem& item, Deadline deadline) override;
    KeychainStatus update(
        const KeychainQuery& query, const Data& secret, Deadline deadline) override;
    KeychainMatch copyMatching(const KeychainQuery& query, Deadline deadline) override;
    KeychainStatus erase(const KeychainQuery& query, Deadline deadline) override;
    KeychainListing list(Deadline deadline) override;

private:
    /// Success when nothing is left to move.
    void moveAll(Deadline deadline);
    /// Whether the keyring holds the item now, and the file's copy may go.
    KeychainStatus moveOne(const StoredItem& stored, bool& moved, Deadline deadline);

    std::unique_ptr<SecretServiceKeychain> m_service;
    std::unique_ptr<FileKeychain> m_file;
    const bool m_moves;
    KeychainReports& m_reports;
};

} // namespace zarn::linux_backend
