// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/secret_connection.h"

#include <cstdlib>

#include <sys/stat.h>

namespace zarn::linux_backend {

namespace {

constexpr auto serviceName = "org.freedesktop.secrets";
constexpr auto busName = "org.freedesktop.DBus";
constexpr auto busPath = "/org/freedesktop/DBus";

CallOutcome outcomeOfBusError(gint code)
{
    switch (code) {
    case G_DBUS_ERROR_SERVICE_UNKNOWN:
    case G_DBUS_ERROR_NAME_HAS_NO_OWNER:
        return CallOutcome::Absent;
    case G_DBUS_ERROR_NO_REPLY:
    case G_DBUS_ERROR_TIMEOUT:
    case G_DBUS_ERROR_TIMED_OUT:
    case G_DBUS_ERROR_DISCONNECTED:
        return CallOutcome::NotAnswering;
    case G_DBUS_ERROR_UNKNOWN_OBJECT:
    case G_DBUS_ERROR_UNKNOWN_METHOD:
        return CallOutcome::NoSuchObject;
    default:
        return CallOutcome::Refused;
    }
}

CallOutcome outcomeOf(const GError& error)
{
    if (error.domain == SECRET_ERROR && error.code == SECRET_ERROR_IS_LOCKED)
        return CallOutcome::Locked;
    if (error.domain == SECRET_ERROR && error.code == SECRET_ERROR_NO_SUCH_OBJECT)
        return CallOutcome::NoSuchObject;
    if (error.domain == G_DBUS_ERROR)
        return outcomeOfBusError(error.code);
    if (error.domain == G_IO_ERROR && error.code == G_IO_ERROR_DBUS_ERROR)
        return CallOutcome::Refused;
    return error.domain == G_IO_ERROR ? CallOutcome::NotAnswering : CallOutcome::Refused;
}

std::string nameOf(const GError& error)
{
    gchar* const remote = g_dbus_error_get_remote_error(&error);
    std::string name = remote ? remote : "";
    g_free(remote);
    return name;
}

bool contains(GVariant* names, const char* wanted)
{
    GVariantIter iterator;
    const gchar* name = nullptr;
    g_variant_iter_init(&iterator, names);
    while (g_variant_iter_next(&iterator, "&s", &name))
        if (std::string_view(name) == wanted)
            return true;
    return false;
}

} // namespace

std::optional<std::string> sessionBusAddress()
{
    const char* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address && *address)
        return std::string_view(address) == "disabled:" ? std::nullopt
                                                        : std::optional<std::string>(address);
    const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
    if (!runtime || *runtime != '/')
        return std::nullopt;
    const auto path = std::string(runtime) + "/bus";
    struct stat status { };
    if (::stat(path.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode))
        return std::nullopt;
    gchar* const escaped = g_dbus_address_escape_value(path.c_str());
    const auto text = std::string("unix:path=") + escaped;
    g_free(escaped);
    return text;
}

SecretConnection::SecretConnection(const CallContext& call)
    : m_await(call)
{
}

SecretConnection::~SecretConnection()
{
    close();
    // What the session had subscribed to is given back on the context that it was opened on.
    m_await.poll();
}

SecretConnection::Reply SecretConnection::callOn(const char* destination, const char* path,
    const char* interface, const char* method, GVariant* arguments, const char* replyType)
{
    const VariantPtr held(arguments ? g_variant_ref_sink(arguments) : nullptr);
    const auto result = m_await.result(
        [&](GCancellable* cancellable, GAsyncReadyCallback callback, gpointer data) {
            g_dbus_connection_call(m_bus.get(), destination, path, interface, method, held.get(),
                G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE, G_MAXINT, cancellable, callback,
                data);
        });
    Reply reply;
    if (!result)
        return reply;
    GError* error = nullptr;
    reply.value.reset(g_dbus_connection_call_finish(m_bus.get(), result.get(), &error));
    const ErrorPtr owned(error);
    if (error) {
        reply.outcome = outcomeOf(*error);
        reply.errorName = nameOf(*error);
    } else {
        reply.outcome = CallOutcome::Answered;
    }
    return reply;
}

SecretConnection::Reply SecretConnection::call(const char* path, const char* interface,
    const char* method, GVariant* arguments, const char* replyType)
{
    return callOn(serviceName, path, interface, method, arguments, replyType);
}

SecretConnection::Reply SecretConnection::property(
    const char* path, const char* interface, const char* name)
{
    auto reply = call(path, "org.freedesktop.DBus.Properties", "Get",
        g_variant_new("(ss)", interface, name), "(v)");
    if (reply.ok()) {
        GVariant* inner = nullptr;
        g_variant_get(reply.value.get(), "(v)", &inner);
        reply.value.reset(inner);
    }
    return reply;
}

CallOutcome SecretConnection::openBus()
{
    if (m_bus && !g_dbus_connection_is_closed(m_bus.get()))
        return CallOutcome::Answered;
    if (!sessionBusAddress())
        return CallOutcome::Absent;
    const auto result = m_await.result(
        [&](GCancellable* cancellable, GAsyncReadyCallback callback, gpointer data) {
            g_bus_get(G_BUS_TYPE_SESSION, cancellable, callback, data);
        });
    if (!result)
        return CallOutcome::NotAnswering;
    GError* error = nullptr;
    m_bus.reset(g_bus_get_finish(result.get(), &error));
    const ErrorPtr owned(error);
    // A connection that was given up once goes on answering that it was cancelled.
    if (error
        && (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)
            || g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT)))
        return CallOutcome::NotAnswering;
    if (!m_bus)
        return CallOutcome::Unreachable;
    // The library's default is to end the process when the bus goes away.
    g_dbus_connection_set_exit_on_close(m_bus.get(), FALSE);
    return CallOutcome::Answered;
}

CallOutcome SecretConnection::findService()
{
    const auto owned = callOn(
        busName, busPath, busName, "NameHasOwner", g_variant_new("(s)", serviceName), "(b)");
    if (!owned.ok())
        return owned.outcome;
    gboolean hasOwner = FALSE;
    g_variant_get(owned.value.get(), "(b)", &hasOwner);
    if (hasOwner)
        return CallOutcome::Answered;
    const auto activatable
        = callOn(busName, busPath, busName, "ListActivatableNames", nullptr, "(as)");
    if (!activatable.ok())
        return activatable.outcome;
    const VariantPtr names(g_variant_get_child_value(activatable.value.get(), 0));
    return contains(names.get(), serviceName) ? CallOutcome::Answered : CallOutcome::Absent;
}

CallOutcome SecretConnection::openSession()
{
    const auto result = m_await.result(
        [&](GCancellable* cancellable, GAsyncReadyCallback callback, gpointer data) {
            secret_service_open(SECRET_TYPE_SERVICE, serviceName, SECRET_SERVICE_OPEN_SESSION,
                cancellable, callback, data);
        });
    if (!result)
        return CallOutcome::NotAnswering;
    GError* error = nullptr;
    m_service.reset(secret_service_open_finish(result.get(), &error));
    const ErrorPtr owned(error);
    if (!error)
        return CallOutcome::Answered;
    // The bus knew it a moment ago.
    const auto outcome = outcomeOf(*error);
    return outcome == CallOutcome::Absent ? CallOutcome::NotAnswering : outcome;
}

CallOutcome SecretConnection::find()
{
    const auto outcome = openBus();
    return outcome == CallOutcome::Answered ? findService() : outcome;
}

CallOutcome SecretConnection::open()
{
    // Lets the news arrive that the service has left the bus.
    m_await.poll();
    if (isOpen())
        return CallOutcome::Answered;
    m_service.reset();
    auto outcome = find();
    if (outcome == CallOutcome::Answered)
        outcome = openSession();
    m_owner = m_service ? currentOwner() : "";
    if (outcome != CallOutcome::Answered)
        close();
    return outcome;
}

void SecretConnection::close()
{
    m_service.reset();
    m_bus.reset();
}

std::string SecretConnection::currentOwner() const
{
    gchar* const owner = g_dbus_proxy_get_name_owner(G_DBUS_PROXY(m_service.get()));
    std::string name = owner ? owner : "";
    g_free(owner);
    return name;
}

bool SecretConnection::isOpen() const
{
    return m_service && m_bus && !g_dbus_connection_is_closed(m_bus.get()) && !m_owner.empty()
        && currentOwner() == m_owner;
}

} // namespace zarn::linux_backend
