// SPDX-License-Identifier: MIT
#pragma once

#include "base/value.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace zarn {

/// A keychain status code; 0 is success.
using KeychainStatus = std::int32_t;

namespace keychain_status {
inline constexpr KeychainStatus success = 0;
inline constexpr KeychainStatus ioFailure = -36;
inline constexpr KeychainStatus userCanceled = -128;
inline constexpr KeychainStatus notAvailable = -25291;
inline constexpr KeychainStatus readOnly = -25292;
/// A keychain file that is there and cannot be opened with its key.
inline constexpr KeychainStatus invalidKeychain = -25295;
inline constexpr KeychainStatus duplicateItem = -25299;
inline constexpr KeychainStatus itemNotFound = -25300;
inline constexpr KeychainStatus noDefaultKeychain = -25307;
/// The service is there but locked, slow or refusing.
inline constexpr KeychainStatus interactionNotAllowed = -25308;
} // namespace keychain_status

/// The access group of every item of the product.
inline constexpr std::string_view keychainAccessGroup = "Q7X2M9K4TA.org.zarnie.zpshortcuts";

/// A place where a backend can keep items, as the command line names it.
struct KeychainKind {
    std::string_view name;
    /// What choosing it means, for the help.
    std::string_view help;
};

/// A generic-password item. At most one exists per access group, service and account.
struct KeychainItem {
    std::string accessGroup;
    std::string service;
    std::string account;
    Data secret;
};

/// Selects generic-password items. Without an account, the item of the service first written.
struct KeychainQuery {
    std::string accessGroup;
    std::string service;
    std::optional<std::string> account;
    /// The native keychain has two databases; other backends have one and ignore the flag.
    bool useDataProtectionKeychain = true;
};

struct KeychainMatch {
    KeychainStatus status = keychain_status::itemNotFound;
    /// Present exactly when status is 0.
    std::optional<KeychainItem> item;
};

/// The user's keychain. Any thread, except where noted. No call blocks longer than 10 s, plus the
/// time that it waits for the user to answer the unlock prompt: at most one minute on the main
/// thread, five minutes on others. On the main thread the window goes on painting meanwhile, and
/// Esc, closing a window or the end of the program stops the waiting (interactionNotAllowed), but
/// not the prompt.
class Keychain {
public:
    /// Called on the main thread, also while a call blocks it, with true when calls begin to wait
    /// for the user to answer the unlock prompt and with false when none does any longer.
    using WaitObserver = std::function<void(bool isWaiting)>;

    virtual ~Keychain() = default;

    /// duplicateItem when access group, service and account are taken; nothing changes then.
    virtual KeychainStatus add(const KeychainItem& item) = 0;
    /// Replaces the secret of the first match; account and place stay. itemNotFound without one.
    virtual KeychainStatus update(const KeychainQuery& query, const Data& secret) = 0;
    /// The first match with its secret.
    virtual KeychainMatch copyMatching(const KeychainQuery& query) = 0;

    /// The text for a status, without a full stop; nothing for a number that is no status of the
    /// keychain.
    virtual std::optional<std::string> messageText(KeychainStatus status) const = 0;

    virtual bool isWaitingForUser() const = 0;
    /// Main thread. The observer lives until the next one is set.
    virtual void setWaitObserver(WaitObserver observer) = 0;
};

} // namespace zarn
