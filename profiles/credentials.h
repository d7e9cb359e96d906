// SPDX-License-Identifier: MIT
#pragma once

#include "platform/keychain.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace zarn {

class LogFile;
class SerialQueue;
struct ConnectionState;

/// Account name to secret.
using AccountMap = std::map<std::string, std::string>;

inline constexpr std::string_view userItemPrefix = "ZPMA-";
inline constexpr std::string_view apiClientItemPrefix = "zortcuts-apiClient-";
/// The entry that carries the current profile. Its service is never prefixed.
inline constexpr std::string_view currentProfileService = "ZPMA-zortcuts";
inline constexpr std::string_view currentProfileAccount = "zortcuts";
inline constexpr std::string_view keychainQueueLabel = "com.zarn.zarn-shortcuts";

/// The only code that touches the keychain. Made for one operation and dropped; a write keeps it
/// alive until it has run. Failures are logged and never reach the caller of save(). Nothing is
/// ever deleted.
class Credentials final : public std::enable_shared_from_this<Credentials> {
public:
    struct Deps {
        Keychain& keychain;
        /// Ended before everything else here: its work uses the keychain and the log.
        SerialQueue& keychainQueue;
        LogFile& log;
        const ConnectionState& connection;
        /// Called on the keychain queue when an item was not stored, with the cause in one
        /// sentence.
        std::function<void(const std::string& cause)> notStored = nullptr;
    };
    explicit Credentials(const Deps& deps)
        : m_deps(deps)
    {
    }

    /// Writes or replaces the secret of an account, later, on the keychain queue. Main thread.
    /// An empty service does nothing.
    void save(const std::string& service, const std::string& account, const std::string& secret);
    /// The first entry of a service: empty, or one pair. Main thread.
    AccountMap retrieve(const std::string& service);
    /// The entry of one service and account, the item name already prefixed: empty, or one pair.
    AccountMap checkExisting(const std::string& itemName, const std::string& account);

private:
    std::string itemNameFor(const std::string& service) const;
    AccountMap lookupItem(const std::string& itemName);
    void writeKeychainItem(
        const std::string& account, const std::string& secret, const std::string& service);
    void updateItem(
        const std::string& account, const std::string& secret, const std::string& service);
    void addItem(const std::string& account, const std::string& secret, const std::string& service);
    /// A write failed with this status; what it means, where that is known.
    std::optional<std::string> failureText(KeychainStatus status);
    void writeEntry(const std::string& message);

    Deps m_deps;
    AccountMap m_userPassDict;
    std::string m_keychainItemName;
};

/// Makes one Credentials for each use.
using CredentialsFactory = std::function<std::shared_ptr<Credentials>()>;

/// Waits, at the end of the program, for the keychain writes that were accepted: 10 s at most, and
/// longer only while the user has to unlock the keychain. `meanwhile` is called every 50 ms. False
/// when time ran out; a write still runs then. Main thread.
[[nodiscard]] bool finishKeychainWrites(
    SerialQueue& queue, const Keychain& keychain, const std::function<void()>& meanwhile);

} // namespace zarn
