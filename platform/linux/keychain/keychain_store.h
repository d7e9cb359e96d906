// SPDX-License-Identifier: MIT
#pragma once

#include "platform/keychain.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zarn::linux_backend {

/// The moment by which a call has to answer.
using Deadline = std::chrono::steady_clock::time_point;

/// What `--keychain=` forces. Automatic: the keyring service, or the file where there provably is
/// no such service.
enum class KeychainChoice { Automatic, SecretService, File };

/// The choice that a command line names: "secret-service" or "file".
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

/// One place where items are kept. One thread at a time; a call may block until its deadline, and
/// whoever serves the main thread runs it elsewhere (see LazyKeychain).
class KeychainStore {
public:
    virtual ~KeychainStore() = default;

    virtual KeychainStatus add(const KeychainItem& item, Deadline deadline) = 0;
    virtual KeychainStatus update(const KeychainQuery& query, const Data& secret, Deadline deadline)
        = 0;
    virtual KeychainMatch copyMatching(const KeychainQuery& query, Deadline deadline) = 0;
    /// Removes the first match. The program itself never does; its diagnosis cleans up after
    /// itself.
    virtual KeychainStatus erase(const KeychainQuery& query, Deadline deadline) = 0;
    /// Every item of the product, without secrets.
    virtual KeychainListing list(Deadline deadline) = 0;
};

/// What a store is made from. Plain data: it crosses the border of a shared module.
struct KeychainOptions {
    KeychainChoice choice = KeychainChoice::Automatic;
    /// Folders of the file keychain and of its key; empty when there is no home directory.
    std::string dataFolder;
    std::string stateFolder;
    /// Whether items of the file keychain move to a keyring service that has appeared.
    bool moveItems = true;
    /// Takes one line about the store's state; standard error when empty. Any thread.
    std::function<void(const std::string&)> report;
};

/// Options with this user's folders.
KeychainOptions keychainOptions(KeychainChoice choice);

/// The text for a status; none for -25308.
std::optional<std::string> keychainMessageText(KeychainStatus status);

/// Statuses beyond those that every backend has.
namespace keychain_status {
using namespace zarn::keychain_status;
inline constexpr KeychainStatus ioFailure = -36;
inline constexpr KeychainStatus readOnly = -25292;
inline constexpr KeychainStatus invalidKeychain = -25295;
inline constexpr KeychainStatus noDefaultKeychain = -25307;
} // namespace keychain_status

} // namespace zarn::linux_backend
