// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/secret_connection.h"

namespace zarn::linux_backend {

/// One prompt that the keyring service shows to the user. It stays open when a wait for it runs
/// out of time: the user may be typing, and the next call goes on waiting for the same prompt.
class SecretPromptWait {
public:
    enum class State { Open, Completed, Dismissed, Vanished };

    SecretPromptWait(SecretConnection& connection, std::string path);
    ~SecretPromptWait();
    SecretPromptWait(const SecretPromptWait&) = delete;
    SecretPromptWait& operator=(const SecretPromptWait&) = delete;

    /// Shows the prompt (once) and waits; Open when the deadline came first.
    State wait(Deadline deadline);
    /// What completed the prompt, such as the path of a new item. Only after Completed.
    GVariant* result() const { return m_result.get(); }

private:
    static void completed(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
        GVariant* parameters, gpointer self);
    CallOutcome show(Deadline deadline);

    SecretConnection& m_connection;
    const std::string m_path;
    const ObjectPtr<GDBusConnection> m_bus;
    guint m_subscription = 0;
    bool m_isShown = false;
    State m_state = State::Open;
    VariantPtr m_result;
};

} // namespace zarn::linux_backend
