// SPDX-License-Identifier: MIT
#pragma once

#include "platform/keychain.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zarn::linux_backend {

/// What `--keychain=` forces. Automatic: the keyring service, or the file where there provably is
/// no such service.
enum class KeychainChoice { Automatic, SecretService, File };

/// The keychains that can be forced, in the order of the help.
inline constexpr std::array<KeychainKind, 2> keychainKinds{
    {{"secret-service", "keep secrets in the keyring service of the desktop, nowhere else"},
        {"file", "keep secrets in a file protected by file permissions"}}};

/// The kind that a command line names: one of keychainKinds.
std::optional<KeychainChoice> keychainChoice(std::string_view name);

/// An item with its times, in seconds since 1970-01-01 00:00 UTC.
struct StoredItem {
    KeychainItem item;
    std::uint64_t created = 0;
    std::uint64_t modified = 0;
};

struct KeychainListing {
    KeychainStatus status = keychain_status::success;
    /// In the order of writing. Without secrets, unless they were asked for.
    std::vector<StoredItem> items;
};

/// One place where items are kept. One thread at a time; a call may block until the call of the
/// context that the store was made with is over, so whoever serves the main thread runs it
/// elsewhere (see KeychainThread).
class KeychainStore {
public:
    virtual ~KeychainStore() = default;

    virtual KeychainStatus add(const KeychainItem& item) = 0;
    virtual KeychainStatus update(const KeychainQuery& query, const Data& secret) = 0;
    virtual KeychainMatch copyMatching(const KeychainQuery& query) = 0;
    /// Removes the first match. Only the diagnosis does, to clean up after itself.
    virtual KeychainStatus erase(const KeychainQuery& query) = 0;
    /// Every item of the product, without secrets.
    virtual KeychainListing list() = 0;
};

/// What a store is made from. Plain data: it crosses the border of a shared module.
struct KeychainOptions {
    KeychainChoice choice = KeychainChoice::Automatic;
    /// Folders of the file keychain and of its key; empty when there is no home directory.
    std::string dataFolder;
    std::string stateFolder;
    /// Whether items of the file keychain move to a keyring service that has appeared.
    bool moveItems = true;
};

/// Options with this user's folders.
KeychainOptions keychainOptions(KeychainChoice choice);

/// The text for a status; nothing for any other number.
std::optional<std::string> keychainMessageText(KeychainStatus status);

} // namespace zarn::linux_backend
