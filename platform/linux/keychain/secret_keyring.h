// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/secret_prompt.h"

namespace zarn::linux_backend {

/// The keyring service as a whole: whether it is there, has a default collection and is unlocked.
/// Every state other than the good one has its status and is told once. One thread at a time.
class SecretKeyring {
public:
    explicit SecretKeyring(KeychainReports& reports);
    ~SecretKeyring();
    SecretKeyring(const SecretKeyring&) = delete;
    SecretKeyring& operator=(const SecretKeyring&) = delete;

    /// Connects, finds the default collection and has it unlocked. noDefaultKeychain (which is not
    /// told) leaves `collection` unusable; items of other collections can be found all the same.
    KeychainStatus prepare(std::string& collection, Deadline deadline);
    /// Unlocks collections or items, with the service's prompt if it wants to show one.
    KeychainStatus unlock(const std::vector<std::string>& paths, Deadline deadline);
    /// Shows the service's prompt at `path` and waits for it.
    KeychainStatus waitForPrompt(const char* path, Deadline deadline);

    /// Tells what went wrong and answers its status.
    KeychainStatus failed(CallOutcome outcome, const std::string& errorName = {});
    KeychainStatus writeFailed(const SecretConnection::Reply& reply);

    /// Connected once prepare() has succeeded.
    SecretConnection& connection() { return m_connection; }
    const SecretConnection& connection() const { return m_connection; }

private:
    SecretConnection::Reply readDefaultAlias(Deadline deadline);
    KeychainStatus isLocked(const std::string& collection, bool& locked, Deadline deadline);
    KeychainStatus waitForOpenPrompt(Deadline deadline);

    KeychainReports& m_reports;
    SecretConnection m_connection;
    /// The prompt that is open, whichever call opened it.
    std::unique_ptr<SecretPromptWait> m_prompt;
};

} // namespace zarn::linux_backend
