// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"
#include "platform/linux/keychain/call_context.h"
#include "platform/linux/keychain/keychain_file_format.h"

namespace zarn::linux_backend {

/// Items in one encrypted file, protected by file permissions. The key lies in another folder, so
/// that a copy of the data folder alone reveals nothing. Several processes may use it at the same
/// time.
class FileKeychain final : public KeychainStore {
public:
    FileKeychain(std::string dataFolder, std::string stateFolder, CallContext& call);

    KeychainStatus add(const KeychainItem& item) override;
    KeychainStatus update(const KeychainQuery& query, const Data& secret) override;
    KeychainMatch copyMatching(const KeychainQuery& query) override;
    KeychainStatus erase(const KeychainQuery& query) override;
    KeychainListing list() override;

    /// Whether a keychain file is there, in whatever state.
    bool exists() const;
    /// All items with their secrets, for moving them to another store.
    KeychainStatus read(KeychainContents& contents) const;
    /// Removes the given items, except those whose secret has changed since. The files of an empty
    /// keychain are deleted, the key last.
    KeychainStatus remove(const std::vector<StoredItem>& items);

private:
    /// An edit of the items; its status decides whether they are written.
    using Edit = std::function<KeychainStatus(std::vector<StoredItem>&)>;
    KeychainStatus change(const Edit& edit);
    KeychainStatus load(KeychainContents& contents, bool& damaged) const;
    /// With the lock held: a damaged file is set aside and reported, and reads as empty.
    KeychainStatus loadUnderLock(KeychainContents& contents) const;
    KeychainStatus write(const KeychainContents& contents);
    /// The key, made when there is neither key nor keychain.
    KeychainStatus keyForWriting(std::string& key);
    KeychainStatus failed(const Error& error, const char* what) const;

    std::string m_path;
    std::string m_keyPath;
    CallContext& m_call;
};

} // namespace zarn::linux_backend
