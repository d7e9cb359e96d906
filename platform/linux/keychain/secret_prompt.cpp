// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/secret_prompt.h"

namespace zarn::linux_backend {

namespace {
constexpr auto promptInterface = "org.freedesktop.Secret.Prompt";
}

SecretPromptWait::SecretPromptWait(SecretConnection& connection, std::string path)
    : m_connection(connection)
    , m_path(std::move(path))
    , m_bus(static_cast<GDBusConnection*>(g_object_ref(connection.bus())))
{
    const GlibAwait::Scope scope(m_connection.await());
    m_subscription = g_dbus_connection_signal_subscribe(m_bus.get(), "org.freedesktop.secrets",
        promptInterface, "Completed", m_path.c_str(), nullptr, G_DBUS_SIGNAL_FLAGS_NONE, completed,
        this, nullptr);
}

SecretPromptWait::~SecretPromptWait()
{
    g_dbus_connection_signal_unsubscribe(m_bus.get(), m_subscription);
}

void SecretPromptWait::completed(GDBusConnection*, const gchar*, const gchar*, const gchar*,
    const gchar*, GVariant* parameters, gpointer self)
{
    auto& prompt = *static_cast<SecretPromptWait*>(self);
    if (prompt.m_state != State::Open || !g_variant_is_of_type(parameters, G_VARIANT_TYPE("(bv)")))
        return;
    gboolean dismissed = FALSE;
    GVariant* result = nullptr;
    g_variant_get(parameters, "(bv)", &dismissed, &result);
    prompt.m_result.reset(result);
    prompt.m_state = dismissed ? State::Dismissed : State::Completed;
}

CallOutcome SecretPromptWait::show(Deadline deadline)
{
    m_isShown = true;
    return m_connection
        .call(m_path.c_str(), promptInterface, "Prompt", g_variant_new("(s)", ""), "()", deadline)
        .outcome;
}

SecretPromptWait::State SecretPromptWait::wait(Deadline deadline)
{
    m_connection.await().poll();
    if (m_state == State::Open && !m_isShown) {
        const auto outcome = show(deadline);
        if (outcome != CallOutcome::Answered && outcome != CallOutcome::NotAnswering)
            m_state = State::Vanished;
    }
    m_connection.await().until(
        [&] { return m_state != State::Open || !m_connection.isOpen(); }, deadline);
    if (m_state == State::Open && !m_connection.isOpen())
        m_state = State::Vanished;
    return m_state;
}

} // namespace zarn::linux_backend
