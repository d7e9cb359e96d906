// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/secret_keyring.h"

namespace zarn::linux_backend {

namespace {

constexpr auto servicePath = "/org/freedesktop/secrets";
constexpr auto serviceInterface = "org.freedesktop.Secret.Service";
constexpr auto collectionInterface = "org.freedesktop.Secret.Collection";
constexpr auto promptInterface = "org.freedesktop.Secret.Prompt";

constexpr auto lockedText = "the keyring is locked; waiting for its unlock prompt";

} // namespace

/// One prompt that the keyring service shows to the user. It stays open when a wait for it runs
/// out of time: the user may be typing, and the next call goes on waiting for the same prompt.
class SecretPrompt {
public:
    enum class State { Open, Completed, Dismissed, Vanished };

    SecretPrompt(SecretConnection& connection, std::string path)
        : m_connection(connection)
        , m_path(std::move(path))
        , m_bus(static_cast<GDBusConnection*>(g_object_ref(connection.bus())))
    {
        const GlibAwait::Scope scope(m_connection.await());
        m_subscription = g_dbus_connection_signal_subscribe(m_bus.get(), "org.freedesktop.secrets",
            promptInterface, "Completed", m_path.c_str(), nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
            completed, this, nullptr);
    }
    ~SecretPrompt() { g_dbus_connection_signal_unsubscribe(m_bus.get(), m_subscription); }
    SecretPrompt(const SecretPrompt&) = delete;
    SecretPrompt& operator=(const SecretPrompt&) = delete;

    CallOutcome show()
    {
        return m_connection
            .call(m_path.c_str(), promptInterface, "Prompt", g_variant_new("(s)", ""), "()")
            .outcome;
    }

    /// Waits for the user; Open when time ran out.
    State wait(CallContext& call)
    {
        m_connection.await().poll();
        if (m_state == State::Open && m_connection.isOpen()) {
            const CallContext::PromptWait waiting(call, m_opened);
            m_connection.await().until(
                [this] { return m_state != State::Open || !m_connection.isOpen(); });
        }
        return m_state == State::Open && !m_connection.isOpen() ? State::Vanished : m_state;
    }

private:
    static void completed(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
        GVariant* parameters, gpointer self)
    {
        auto& prompt = *static_cast<SecretPrompt*>(self);
        if (prompt.m_state != State::Open
            || !g_variant_is_of_type(parameters, G_VARIANT_TYPE("(bv)")))
            return;
        gboolean isDismissed = FALSE;
        g_variant_get_child(parameters, 0, "b", &isDismissed);
        prompt.m_state = isDismissed ? State::Dismissed : State::Completed;
    }

    SecretConnection& m_connection;
    const std::string m_path;
    const ObjectPtr<GDBusConnection> m_bus;
    const CallContext::Clock::time_point m_opened = CallContext::Clock::now();
    guint m_subscription = 0;
    State m_state = State::Open;
};

SecretKeyring::SecretKeyring(CallContext& call)
    : m_call(call)
    , m_connection(call)
{
}

SecretKeyring::~SecretKeyring() = default;

KeychainStatus SecretKeyring::failed(CallOutcome outcome, const std::string& errorName)
{
    switch (outcome) {
    case CallOutcome::Answered:
        return keychain_status::success;
    case CallOutcome::NoSuchObject:
        return keychain_status::itemNotFound;
    case CallOutcome::Absent:
        m_call.report("there is no keyring service; items are neither read nor stored "
                      "(--keychain=file keeps them in an encrypted file)");
        return keychain_status::notAvailable;
    case CallOutcome::Unreachable:
        m_call.report("the session bus cannot be reached, so neither can the keyring service; "
                      "items are neither read nor stored (--keychain=file keeps them in an "
                      "encrypted file)");
        return keychain_status::notAvailable;
    case CallOutcome::NotAnswering:
        // Nobody waited any longer, which says nothing about the service.
        if (m_call.stopToken().stop_requested())
            break;
        // The next call starts afresh instead of trusting a session in an unknown state.
        m_prompt.reset();
        m_connection.close();
        m_call.report("the keyring service does not answer");
        break;
    case CallOutcome::Locked:
        m_call.report(lockedText);
        break;
    case CallOutcome::Refused:
        m_call.report("the keyring service refused", errorName);
        break;
    }
    return keychain_status::interactionNotAllowed;
}

SecretKeyring::Reply SecretKeyring::read(const char* path, const char* interface,
    const char* method, GVariant* arguments, const char* replyType)
{
    auto reply = m_connection.call(path, interface, method, arguments, replyType);
    return {failed(reply.outcome, reply.errorName), std::move(reply.value)};
}

SecretKeyring::Reply SecretKeyring::change(const char* path, const char* interface,
    const char* method, GVariant* arguments, const char* replyType)
{
    auto reply = m_connection.call(path, interface, method, arguments, replyType);
    if (reply.outcome != CallOutcome::Refused)
        return {failed(reply.outcome, reply.errorName), std::move(reply.value)};
    m_call.report("the keyring service does not let items be changed", reply.errorName);
    return {keychain_status::readOnly, nullptr};
}

KeychainStatus SecretKeyring::isLocked(const std::string& collection, bool& locked)
{
    const auto reply = m_connection.property(collection.c_str(), collectionInterface, "Locked");
    if (!reply.ok())
        return failed(reply.outcome, reply.errorName);
    // A reply of another type is no proof that the collection is open.
    locked = !g_variant_is_of_type(reply.value.get(), G_VARIANT_TYPE_BOOLEAN)
        || g_variant_get_boolean(reply.value.get());
    return keychain_status::success;
}

KeychainStatus SecretKeyring::waitForPrompt()
{
    const auto state = m_prompt->wait(m_call);
    if (state == SecretPrompt::State::Open)
        return keychain_status::interactionNotAllowed;
    m_prompt.reset();
    if (state == SecretPrompt::State::Vanished)
        return failed(CallOutcome::NotAnswering);
    if (state == SecretPrompt::State::Completed)
        return keychain_status::success;
    m_call.report("the keyring's unlock prompt was dismissed");
    return keychain_status::userCanceled;
}

KeychainStatus SecretKeyring::finish(GVariant* reply, gsize index)
{
    const gchar* prompt = nullptr;
    g_variant_get_child(reply, index, "&o", &prompt);
    if (std::string_view(prompt) == "/")
        return keychain_status::success;
    m_prompt = std::make_unique<SecretPrompt>(m_connection, prompt);
    const auto shown = m_prompt->show();
    // A call that nobody waits for any longer leaves the prompt to the next one.
    if (shown != CallOutcome::Answered && !m_call.stopToken().stop_requested()) {
        m_prompt.reset();
        return failed(shown == CallOutcome::NoSuchObject ? CallOutcome::NotAnswering : shown);
    }
    return waitForPrompt();
}

KeychainStatus SecretKeyring::unlock(const std::vector<std::string>& paths)
{
    m_call.report(lockedText);
    if (m_prompt)
        return waitForPrompt();
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("ao"));
    for (const auto& path : paths)
        g_variant_builder_add(&builder, "o", path.c_str());
    const auto reply
        = read(servicePath, serviceInterface, "Unlock", g_variant_new("(ao)", &builder), "(aoo)");
    return reply.value ? finish(reply.value.get(), 1) : reply.status;
}

SecretConnection::Reply SecretKeyring::readDefaultAlias()
{
    SecretConnection::Reply reply;
    reply.outcome = m_connection.open();
    return reply.ok() ? m_connection.call(
               servicePath, serviceInterface, "ReadAlias", g_variant_new("(s)", "default"), "(o)")
                      : std::move(reply);
}

KeychainStatus SecretKeyring::prepare(std::string& collection)
{
    auto reply = readDefaultAlias();
    // With the first reply comes the news that the service has left the bus or was started anew
    // since the last call.
    if (reply.outcome != CallOutcome::NotAnswering && !m_connection.isOpen())
        reply = readDefaultAlias();
    if (!reply.ok())
        return failed(reply.outcome, reply.errorName);
    const gchar* path = nullptr;
    g_variant_get(reply.value.get(), "(&o)", &path);
    collection = path;
    if (collection == "/")
        return keychain_status::noDefaultKeychain;
    bool locked = false;
    auto status = isLocked(collection, locked);
    if (status == keychain_status::success && locked) {
        status = unlock({collection});
        if (status == keychain_status::success)
            status = isLocked(collection, locked);
        if (status == keychain_status::success && locked)
            status = keychain_status::interactionNotAllowed;
    }
    // The alias pointed at a collection that is gone.
    return status == keychain_status::itemNotFound ? keychain_status::noDefaultKeychain : status;
}

} // namespace zarn::linux_backend
