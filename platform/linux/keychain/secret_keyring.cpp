// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/secret_keyring.h"

namespace zarn::linux_backend {

namespace {

constexpr auto servicePath = "/org/freedesktop/secrets";
constexpr auto serviceInterface = "org.freedesktop.Secret.Service";
constexpr auto collectionInterface = "org.freedesktop.Secret.Collection";

} // namespace

SecretKeyring::SecretKeyring(KeychainReports& reports)
    : m_reports(reports)
{
}

SecretKeyring::~SecretKeyring() = default;

KeychainStatus SecretKeyring::failed(CallOutcome outcome, const std::string& errorName)
{
    switch (outcome) {
    case CallOutcome::Answered:
        return keychain_status::success;
    case CallOutcome::Absent:
        m_reports.tell(KeychainState::Absent);
        return keychain_status::notAvailable;
    case CallOutcome::Unreachable:
        m_reports.tell(KeychainState::Unreachable);
        return keychain_status::notAvailable;
    case CallOutcome::NotAnswering:
        // The next call starts afresh instead of trusting a session in an unknown state.
        m_prompt.reset();
        m_connection.close();
        m_reports.tell(KeychainState::NotAnswering);
        return keychain_status::interactionNotAllowed;
    case CallOutcome::NoSuchObject:
        return keychain_status::itemNotFound;
    case CallOutcome::Locked:
        m_reports.tell(KeychainState::Locked);
        return keychain_status::interactionNotAllowed;
    case CallOutcome::Refused:
        m_reports.tell(KeychainState::Refused, errorName);
        return keychain_status::interactionNotAllowed;
    }
    return keychain_status::interactionNotAllowed;
}

KeychainStatus SecretKeyring::writeFailed(const SecretConnection::Reply& reply)
{
    if (reply.outcome != CallOutcome::Refused)
        return failed(reply.outcome, reply.errorName);
    m_reports.tell(KeychainState::ReadOnly, reply.errorName);
    return keychain_status::readOnly;
}

KeychainStatus SecretKeyring::isLocked(
    const std::string& collection, bool& locked, Deadline deadline)
{
    const auto reply
        = m_connection.property(collection.c_str(), collectionInterface, "Locked", deadline);
    if (!reply.ok())
        return failed(reply.outcome, reply.errorName);
    // An answer of another type is no proof that the collection is open.
    locked = !g_variant_is_of_type(reply.value.get(), G_VARIANT_TYPE_BOOLEAN)
        || g_variant_get_boolean(reply.value.get());
    return keychain_status::success;
}

KeychainStatus SecretKeyring::waitForOpenPrompt(Deadline deadline)
{
    const auto state = m_prompt->wait(deadline);
    if (state == SecretPromptWait::State::Open)
        return keychain_status::interactionNotAllowed;
    m_prompt.reset();
    switch (state) {
    case SecretPromptWait::State::Completed:
        return keychain_status::success;
    case SecretPromptWait::State::Dismissed:
        m_reports.tell(KeychainState::PromptDismissed);
        return keychain_status::userCanceled;
    default:
        return failed(CallOutcome::NotAnswering);
    }
}

KeychainStatus SecretKeyring::waitForPrompt(const char* path, Deadline deadline)
{
    m_prompt = std::make_unique<SecretPromptWait>(m_connection, path);
    return waitForOpenPrompt(deadline);
}

KeychainStatus SecretKeyring::unlock(const std::vector<std::string>& paths, Deadline deadline)
{
    m_reports.tell(KeychainState::Locked);
    if (m_prompt)
        return waitForOpenPrompt(deadline);
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("ao"));
    for (const auto& path : paths)
        g_variant_builder_add(&builder, "o", path.c_str());
    const auto reply = m_connection.call(servicePath, serviceInterface, "Unlock",
        g_variant_new("(ao)", &builder), "(aoo)", deadline);
    if (!reply.ok())
        return failed(reply.outcome, reply.errorName);
    const gchar* prompt = nullptr;
    g_variant_get_child(reply.value.get(), 1, "&o", &prompt);
    if (std::string_view(prompt) == "/")
        return keychain_status::success;
    return waitForPrompt(prompt, deadline);
}

SecretConnection::Reply SecretKeyring::readDefaultAlias(Deadline deadline)
{
    SecretConnection::Reply reply;
    reply.outcome = m_connection.open(deadline);
    if (!reply.ok())
        return reply;
    return m_connection.call(servicePath, serviceInterface, "ReadAlias",
        g_variant_new("(s)", "default"), "(o)", deadline);
}

KeychainStatus SecretKeyring::prepare(std::string& collection, Deadline deadline)
{
    auto reply = readDefaultAlias(deadline);
    // With the first answer comes the news that the service has left the bus or was started anew
    // since the last call.
    if (reply.outcome != CallOutcome::NotAnswering && !m_connection.isOpen())
        reply = readDefaultAlias(deadline);
    if (!reply.ok())
        return failed(reply.outcome, reply.errorName);
    const gchar* path = nullptr;
    g_variant_get(reply.value.get(), "(&o)", &path);
    collection = path;
    if (collection == "/")
        return keychain_status::noDefaultKeychain;
    bool locked = false;
    auto status = isLocked(collection, locked, deadline);
    if (status == keychain_status::success && locked) {
        status = unlock({collection}, deadline);
        if (status == keychain_status::success)
            status = isLocked(collection, locked, deadline);
        if (status == keychain_status::success && locked)
            status = keychain_status::interactionNotAllowed;
    }
    // The alias pointed at a collection that is gone.
    return status == keychain_status::itemNotFound ? keychain_status::noDefaultKeychain : status;
}

} // namespace zarn::linux_backend
