// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/secret_service_keychain.h"

#include "base/utf8.h"
#include "base/wipe.h"

#include <algorithm>
#include <tuple>

namespace zarn::linux_backend {

namespace {

constexpr auto schemaName = "org.zarnie.zpshortcuts.GenericPassword";
constexpr auto servicePath = "/org/freedesktop/secrets";
constexpr auto serviceInterface = "org.freedesktop.Secret.Service";
constexpr auto collectionInterface = "org.freedesktop.Secret.Collection";
constexpr auto itemInterface = "org.freedesktop.Secret.Item";

constexpr auto itemGone = "an item disappeared from the keyring while it was being read";

void addAttribute(GVariantBuilder& builder, const char* name, const std::string& value)
{
    g_variant_builder_add(&builder, "{ss}", name, value.c_str());
}

/// The attributes to look for: those of the query, and the schema in any case, so that another
/// program's item never matches.
GVariant* attributesOf(const KeychainQuery* query)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{ss}"));
    addAttribute(builder, "xdg:schema", schemaName);
    if (query) {
        addAttribute(builder, "service", query->service);
        addAttribute(builder, "access-group", query->accessGroup);
        if (query->account)
            addAttribute(builder, "account", *query->account);
    }
    return g_variant_builder_end(&builder);
}

std::vector<std::string> pathsIn(GVariant* tuple, gsize index)
{
    const VariantPtr array(g_variant_get_child_value(tuple, index));
    std::vector<std::string> paths;
    for (gsize i = 0; i < g_variant_n_children(array.get()); ++i) {
        const VariantPtr path(g_variant_get_child_value(array.get(), i));
        paths.emplace_back(g_variant_get_string(path.get(), nullptr));
    }
    return paths;
}

std::string attribute(GVariant* attributes, const char* name)
{
    const gchar* value = nullptr;
    return g_variant_lookup(attributes, name, "&s", &value) ? value : "";
}

/// The wire carries texts without NUL and in UTF-8 only.
bool canBeAttribute(const std::string& text)
{
    return text.find('\0') == std::string::npos && isUtf8(text);
}

bool canBeStored(const KeychainQuery& query)
{
    return canBeAttribute(query.service) && canBeAttribute(query.accessGroup)
        && (!query.account || canBeAttribute(*query.account));
}

} // namespace

SecretServiceKeychain::SecretServiceKeychain(CallContext& call)
    : m_call(call)
    , m_keyring(call)
{
}

KeychainStatus SecretServiceKeychain::searchPaths(const KeychainQuery* query, Paths& paths)
{
    const auto reply = m_keyring.read(servicePath, serviceInterface, "SearchItems",
        g_variant_new("(@a{ss})", attributesOf(query)), "(aoao)");
    if (reply.value) {
        paths.unlocked = pathsIn(reply.value.get(), 0);
        paths.locked = pathsIn(reply.value.get(), 1);
    }
    return reply.status;
}

KeychainStatus SecretServiceKeychain::describe(Candidate& candidate)
{
    const auto reply = m_keyring.read(candidate.path.c_str(), "org.freedesktop.DBus.Properties",
        "GetAll", g_variant_new("(s)", itemInterface), "(a{sv})");
    if (!reply.value)
        return reply.status;
    const VariantPtr properties(g_variant_get_child_value(reply.value.get(), 0));
    const VariantPtr attributes(
        g_variant_lookup_value(properties.get(), "Attributes", G_VARIANT_TYPE("a{ss}")));
    if (!attributes)
        return keychain_status::itemNotFound;
    guint64 time = 0;
    if (g_variant_lookup(properties.get(), "Created", "t", &time))
        candidate.stored.created = time;
    if (g_variant_lookup(properties.get(), "Modified", "t", &time))
        candidate.stored.modified = time;
    candidate.stored.item.service = attribute(attributes.get(), "service");
    candidate.stored.item.account = attribute(attributes.get(), "account");
    candidate.stored.item.accessGroup = attribute(attributes.get(), "access-group");
    return keychain_status::success;
}

KeychainStatus SecretServiceKeychain::unlockedPaths(const KeychainQuery* query, Paths& paths)
{
    auto status = searchPaths(query, paths);
    const auto isLocked = [&] {
        return status == keychain_status::success && paths.unlocked.empty()
            && !paths.locked.empty();
    };
    if (!isLocked())
        return status;
    status = m_keyring.unlock(paths.locked);
    if (status == keychain_status::success)
        status = searchPaths(query, paths);
    return isLocked() ? keychain_status::interactionNotAllowed : status;
}

KeychainStatus SecretServiceKeychain::search(const KeychainQuery* query, Found& found)
{
    if (query && !canBeStored(*query))
        return keychain_status::itemNotFound;
    const auto prepared = m_keyring.prepare(found.collection);
    if (prepared != keychain_status::success && prepared != keychain_status::noDefaultKeychain)
        return prepared;
    Paths paths;
    if (const auto status = unlockedPaths(query, paths); status != keychain_status::success)
        return status;
    for (const auto& path : paths.unlocked) {
        Candidate candidate{path, {}};
        const auto status = describe(candidate);
        if (status == keychain_status::success)
            found.candidates.push_back(std::move(candidate));
        else if (status == keychain_status::itemNotFound)
            m_call.report(itemGone);
        else
            return status;
    }
    // Times have whole seconds; within one, the service's running numbers tell the order.
    const auto order = [](const Candidate& candidate) {
        return std::make_tuple(candidate.stored.created, candidate.path.size(), candidate.path);
    };
    std::sort(found.candidates.begin(), found.candidates.end(),
        [&](const Candidate& a, const Candidate& b) { return order(a) < order(b); });
    if (!found.candidates.empty())
        return keychain_status::success;
    if (prepared == keychain_status::success)
        return keychain_status::itemNotFound;
    m_call.report("the keyring service has no default collection; make one with the desktop's "
                  "keyring program");
    return prepared;
}

KeychainStatus SecretServiceKeychain::loadSecret(Candidate& candidate)
{
    const auto reply = m_keyring.read(candidate.path.c_str(), itemInterface, "GetSecret",
        g_variant_new("(o)", secret_service_get_session_dbus_path(m_keyring.service())),
        "((oayays))");
    if (!reply.value)
        return reply.status;
    const VariantPtr encrypted(g_variant_get_child_value(reply.value.get(), 0));
    SecretValue* const value
        = secret_service_decode_dbus_secret(m_keyring.service(), encrypted.get());
    if (!value)
        return m_keyring.refused("undecipherable secret");
    gsize size = 0;
    const gchar* const bytes = secret_value_get(value, &size);
    candidate.stored.item.secret.assign(bytes, bytes + size);
    secret_value_unref(value);
    return keychain_status::success;
}

KeychainStatus SecretServiceKeychain::find(const KeychainQuery& query, StoredItem& item)
{
    Found found;
    auto status = search(&query, found);
    for (auto& candidate : found.candidates) {
        status = loadSecret(candidate);
        if (status == keychain_status::success)
            item = std::move(candidate.stored);
        if (status != keychain_status::itemNotFound)
            break;
        m_call.report(itemGone);
    }
    return status;
}

KeychainMatch SecretServiceKeychain::copyMatching(const KeychainQuery& query)
{
    StoredItem found;
    if (const auto status = find(query, found); status != keychain_status::success)
        return {status, std::nullopt};
    return {keychain_status::success, std::move(found.item)};
}

KeychainStatus SecretServiceKeychain::erase(const KeychainQuery& query)
{
    Found found;
    if (const auto status = search(&query, found); status != keychain_status::success)
        return status;
    const auto reply = m_keyring.change(
        found.candidates.front().path.c_str(), itemInterface, "Delete", g_variant_new("()"), "(o)");
    return reply.value ? m_keyring.finish(reply.value.get(), 0) : reply.status;
}

KeychainListing SecretServiceKeychain::list()
{
    Found found;
    KeychainListing listing{search(nullptr, found), {}};
    if (listing.status == keychain_status::itemNotFound)
        listing.status = keychain_status::success;
    for (auto& candidate : found.candidates)
        listing.items.push_back(std::move(candidate.stored));
    return listing;
}

VariantPtr SecretServiceKeychain::encoded(const Data& secret) const
{
    const auto* const bytes = reinterpret_cast<const gchar*>(secret.data());
    const bool isText = isUtf8({bytes, secret.size()});
    SecretValue* const value = secret_value_new(secret.empty() ? "" : bytes,
        static_cast<gssize>(secret.size()), isText ? "text/plain" : "application/octet-stream");
    VariantPtr variant(
        g_variant_ref_sink(secret_service_encode_dbus_secret(m_keyring.service(), value)));
    secret_value_unref(value);
    return variant;
}

KeychainStatus SecretServiceKeychain::update(const KeychainQuery& query, const Data& secret)
{
    Found found;
    auto status = search(&query, found);
    if (status != keychain_status::success)
        return status;
    const auto variant = encoded(secret);
    status = m_keyring
                 .change(found.candidates.front().path.c_str(), itemInterface, "SetSecret",
                     g_variant_new("(@(oayays))", variant.get()), "()")
                 .status;
    if (status == keychain_status::itemNotFound)
        m_call.report(itemGone);
    return status;
}

KeychainStatus SecretServiceKeychain::add(const KeychainItem& item)
{
    const KeychainQuery same{item.accessGroup, item.service, item.account, true};
    if (!canBeStored(same))
        return keychain_status::readOnly;
    Found found;
    const auto status = search(&same, found);
    if (status != keychain_status::itemNotFound)
        return status == keychain_status::success ? keychain_status::duplicateItem : status;
    const auto label = item.service + " (" + item.account + ")";
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Item.Label",
        g_variant_new_string(label.c_str()));
    g_variant_builder_add(
        &properties, "{sv}", "org.freedesktop.Secret.Item.Attributes", attributesOf(&same));
    const auto secret = encoded(item.secret);
    const auto reply = m_keyring.change(found.collection.c_str(), collectionInterface, "CreateItem",
        g_variant_new("(a{sv}@(oayays)b)", &properties, secret.get(), FALSE), "(oo)");
    return reply.value ? m_keyring.finish(reply.value.get(), 1) : reply.status;
}

} // namespace zarn::linux_backend
