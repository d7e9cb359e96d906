// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/glib_await.h"

#include <libsecret/secret.h>

#include <optional>

namespace zarn::linux_backend {

/// The address of the session bus; nothing when the environment names none. A bus is never started
/// for this: its keyring would not be the user's.
std::optional<std::string> sessionBusAddress();

/// The outcome of a call to the keyring service.
enum class CallOutcome {
    Answered,
    Absent,
    Unreachable,
    NotAnswering,
    NoSuchObject,
    Locked,
    Refused
};

/// Calls to the keyring service (org.freedesktop.secrets) over an encrypted session, each bounded
/// by the call of the context. Connects on first use and again after a failure. One thread at a
/// time.
class SecretConnection {
public:
    struct Reply {
        CallOutcome outcome = CallOutcome::NotAnswering;
        VariantPtr value;
        /// The D-Bus name of the error, for a report.
        std::string errorName;
        bool ok() const { return outcome == CallOutcome::Answered; }
    };

    explicit SecretConnection(const CallContext& call);
    ~SecretConnection();
    SecretConnection(const SecretConnection&) = delete;
    SecretConnection& operator=(const SecretConnection&) = delete;

    /// Asks the bus about the service without calling it: Answered when it runs or can be started.
    CallOutcome find();
    /// Opens the session. Absent: the bus answers, and neither runs such a service nor can start
    /// one.
    CallOutcome open();
    /// Calls a method and checks the type of its reply. Only after open() has answered Answered.
    Reply call(const char* path, const char* interface, const char* method, GVariant* arguments,
        const char* replyType);
    /// A property of an object of the service; the reply's value is the property itself.
    Reply property(const char* path, const char* interface, const char* name);
    /// Forgets the session; the next open() makes a new one.
    void close();

    /// Opened and the service has not left the bus since.
    bool isOpen() const;
    SecretService* service() const { return m_service.get(); }
    GDBusConnection* bus() const { return m_bus.get(); }
    GlibAwait& await() { return m_await; }

private:
    CallOutcome openBus();
    CallOutcome findService();
    CallOutcome openSession();
    std::string currentOwner() const;
    Reply callOn(const char* destination, const char* path, const char* interface,
        const char* method, GVariant* arguments, const char* replyType);

    GlibAwait m_await;
    ObjectPtr<GDBusConnection> m_bus;
    ObjectPtr<SecretService> m_service;
    /// The unique bus name of the service that the session was opened with.
    std::string m_owner;
};

} // namespace zarn::linux_backend
