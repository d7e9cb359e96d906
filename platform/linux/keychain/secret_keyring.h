// SPDX-License-Identifier: MIT
#pragma once

#include "platform/keychain.h"
#include "platform/linux/keychain/secret_connection.h"

#include <vector>

namespace zarn::linux_backend {

class SecretPrompt;

/// The keyring service as a whole: whether it is there, has a default collection and is unlocked.
/// Every failure has its status and is reported. One thread at a time.
class SecretKeyring {
public:
    struct Reply {
        KeychainStatus status = keychain_status::success;
        /// Present exactly when status is 0.
        VariantPtr value;
    };

    explicit SecretKeyring(CallContext& call);
    ~SecretKeyring();
    SecretKeyring(const SecretKeyring&) = delete;
    SecretKeyring& operator=(const SecretKeyring&) = delete;

    /// Connects, finds the default collection and has it unlocked. noDefaultKeychain (which is not
    /// reported) leaves `collection` unusable; items of other collections can be found all the
    /// same.
    KeychainStatus prepare(std::string& collection);
    /// Unlocks collections or items, with the service's prompt if it wants to show one.
    KeychainStatus unlock(const std::vector<std::string>& paths);
    /// Waits for the prompt whose path is the `index`-th value of a reply, if the service wants to
    /// show one.
    KeychainStatus finish(GVariant* reply, gsize index);

    /// Calls a method of an object of the service. Only after prepare().
    Reply read(const char* path, const char* interface, const char* method, GVariant* arguments,
        const char* replyType);
    /// The same for a method that changes something: a refusal means that nothing can be changed.
    Reply change(const char* path, const char* interface, const char* method, GVariant* arguments,
        const char* replyType);
    /// The service's reply cannot be used.
    KeychainStatus refused(const std::string& why) { return failed(CallOutcome::Refused, why); }

    /// The session that secrets are encrypted for. Only after prepare().
    SecretService* service() const { return m_connection.service(); }

private:
    SecretConnection::Reply readDefaultAlias();
    KeychainStatus failed(CallOutcome outcome, const std::string& errorName = {});
    KeychainStatus isLocked(const std::string& collection, bool& locked);
    KeychainStatus waitForPrompt();

    CallContext& m_call;
    SecretConnection m_connection;
    /// The prompt that is open, whichever call opened it.
    std::unique_ptr<SecretPrompt> m_prompt;
};

} // namespace zarn::linux_backend
