// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/secret_service_keychain.h"

#include "base/utf8.h"
#include "platform/linux/keychain/wipe.h"

#include <algorithm>
#include <tuple>

namespace zarn::linux_backend {

namespace {

constexpr auto schemaName = "org.zarnie.zpshortcuts.GenericPassword";
constexpr auto servicePath = "/org/freedesktop/secrets";
constexpr auto serviceInterface = "org.freedesktop.Secret.Service";
constexpr auto collectionInterface = "org.freedesktop.Secret.Collection";
constexpr auto itemInterface = "org.freedesktop.Secret.Item";

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

bool canBeAsked(const KeychainQuery& query)
{
    return canBeAttribute(query.service) && canBeAttribute(query.accessGroup)
        && (!query.account || canBeAttribute(*query.account));
}

} // namespace

SecretServiceKeychain::SecretServiceKeychain(KeychainReports& reports)
    : m_reports(reports)
    , m_keyring(reports)
{
}

SecretServiceKeychain::~SecretServiceKeychain() = default;

KeychainStatus SecretServiceKeychain::searchPaths(
    const KeychainQuery* query, Paths& paths, Deadline deadline)
{
    const auto reply = m_keyring.connection().call(servicePath, serviceInterface, "SearchItems",
        g_variant_new("(@a{ss})", attributesOf(query)), "(aoao)", deadline);
    if (!reply.ok())
        return m_keyring.failed(reply.outcome, reply.errorName);
    paths.unlocked = pathsIn(reply.value.get(), 0);
    paths.locked = pathsIn(reply.value.get(), 1);
    return keychain_status::success;
}

KeychainStatus SecretServiceKeychain::describe(Candidate& candidate, Deadline deadline)
{
    const auto reply
        = m_keyring.connection().call(candidate.path.c_str(), "org.freedesktop.DBus.Properties",
            "GetAll", g_variant_new("(s)", itemInterface), "(a{sv})", deadline);
    if (!reply.ok())
        return m_keyring.failed(reply.outcome, reply.errorName);
    const VariantPtr properties(g_variant_get_child_value(reply.value.get(), 0));
    const VariantPtr attributes(
        g_variant_lookup_value(properties.get(), "Attributes", G_VARIANT_TYPE("a{ss}")));
    if (!attributes)
        return m_keyring.failed(CallOutcome::NoSuchObject);
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

KeychainStatus SecretServiceKeychain::search(
    const KeychainQuery* query, std::vector<Candidate>& candidates, Deadline deadline)
{
    Paths paths;
    auto status = searchPaths(query, paths, deadline);
    if (status == keychain_status::success && paths.unlocked.empty() && !paths.locked.empty()) {
        status = m_keyring.unlock(paths.locked, deadline);
        if (status == keychain_status::success)
            status = searchPaths(query, paths, deadline);
        if (status == keychain_status::success && paths.unlocked.empty() && !paths.locked.empty())
            status = keychain_status::interactionNotAllowed;
    }
    if (status != keychain_status::success)
        return status;
    for (const auto& path : paths.unlocked) {
        Candidate candidate{path, {}};
        status = describe(candidate, deadline);
        if (status == keychain_status::success)
            candidates.push_back(std::move(candidate));
        else if (status == keychain_status::itemNotFound)
            m_reports.tell(KeychainState::ItemGone);
        else
            return status;
    }
    // Times have whole seconds; within one, the service's running numbers tell the order.
    const auto order = [](const Candidate& candidate) {
        return std::make_tuple(candidate.stored.created, candidate.path.size(), candidate.path);
    };
    std::sort(candidates.begin(), candidates.end(),
        [&](const Candidate& a, const Candidate& b) { return order(a) < order(b); });
    return candidates.empty() ? keychain_status::itemNotFound : keychain_status::success;
}

KeychainStatus SecretServiceKeychain::loadSecret(Candidate& candidate, Deadline deadline)
{
    const auto reply
        = m_keyring.connection().call(candidate.path.c_str(), itemInterface, "GetSecret",
            g_variant_new(
                "(o)", secret_service_get_session_dbus_path(m_keyring.connection().service())),
            "((oayays))", deadline);
    if (!reply.ok())
        return m_keyring.failed(reply.outcome, reply.errorName);
    const VariantPtr encrypted(g_variant_get_child_value(reply.value.get(), 0));
    SecretValue* const value
        = secret_service_decode_dbus_secret(m_keyring.connection().service(), encrypted.get());
    if (!value)
        return m_keyring.failed(CallOutcome::Refused, "undecipherable secret");
    gsize size = 0;
    const gchar* const bytes = secret_value_get(value, &size);
    candidate.stored.item.secret.assign(bytes, bytes + size);
    secret_value_unref(value);
    return keychain_status::success;
}

KeychainStatus SecretServiceKeychain::find(
    const KeychainQuery& query, StoredItem& found, Deadline deadline)
{
    if (!canBeAsked(query))
        return keychain_status::itemNotFound;
    std::string collection;
    const auto prepared = m_keyring.prepare(collection, deadline);
    if (prepared != keychain_status::success && prepared != keychain_status::noDefaultKeychain)
        return prepared;
    std::vector<Candidate> candidates;
    auto status = search(&query, candidates, deadline);
    if (status == keychain_status::itemNotFound && prepared == keychain_status::noDefaultKeychain) {
        m_reports.tell(KeychainState::NoDefaultCollection);
        return prepared;
    }
    for (auto& candidate : candidates) {
        status = loadSecret(candidate, deadline);
        if (status == keychain_status::itemNotFound) {
            m_reports.tell(KeychainState::ItemGone);
            continue;
        }
        if (status == keychain_status::success)
            found = std::move(candidate.stored);
        return status;
    }
    return status;
}

KeychainMatch SecretServiceKeychain::copyMatching(const KeychainQuery& query, Deadline deadline)
{
    StoredItem found;
    const auto status = find(query, found, deadline);
    if (status != keychain_status::success)
        return {status, std::nullopt};
    return {status, std::move(found.item)};
}

KeychainStatus SecretServiceKeychain::erase(const KeychainQuery& query, Deadline deadline)
{
    if (!canBeAsked(query))
        return keychain_status::itemNotFound;
    std::string collection;
    const auto prepared = m_keyring.prepare(collection, deadline);
    if (prepared != keychain_status::success && prepared != keychain_status::noDefaultKeychain)
        return prepared;
    std::vector<Candidate> candidates;
    const auto status = search(&query, candidates, deadline);
    if (status != keychain_status::success)
        return status;
    const auto reply = m_keyring.connection().call(candidates.front().path.c_str(), itemInterface,
        "Delete", g_variant_new("()"), "(o)", deadline);
    return reply.ok() ? promptOutcome(reply, 0, deadline) : m_keyring.writeFailed(reply);
}

KeychainListing SecretServiceKeychain::list(Deadline deadline)
{
    KeychainListing listing;
    std::string collection;
    listing.status = m_keyring.prepare(collection, deadline);
    const bool hasDefault = listing.status != keychain_status::noDefaultKeychain;
    if (listing.status != keychain_status::success && hasDefault)
        return listing;
    std::vector<Candidate> candidates;
    listing.status = search(nullptr, candidates, deadline);
    if (listing.status == keychain_status::itemNotFound)
        listing.status = hasDefault ? keychain_status::success : keychain_status::noDefaultKeychain;
    for (auto& candidate : candidates)
        listing.items.push_back(std::move(candidate.stored));
    return listing;
}

VariantPtr SecretServiceKeychain::encoded(const Data& secret) const
{
    const auto* const bytes = reinterpret_cast<const gchar*>(secret.data());
    const bool isText = isUtf8({bytes, secret.size()});
    SecretValue* const value = secret_value_new(secret.empty() ? "" : bytes,
        static_cast<gssize>(secret.size()), isText ? "text/plain" : "application/octet-stream");
    VariantPtr variant(g_variant_ref_sink(
        secret_service_encode_dbus_secret(m_keyring.connection().service(), value)));
    secret_value_unref(value);
    return variant;
}

KeychainStatus SecretServiceKeychain::update(
    const KeychainQuery& query, const Data& secret, Deadline deadline)
{
    if (!canBeAsked(query))
        return keychain_status::itemNotFound;
    std::string collection;
    const auto prepared = m_keyring.prepare(collection, deadline);
    if (prepared != keychain_status::success && prepared != keychain_status::noDefaultKeychain)
        return prepared;
    std::vector<Candidate> candidates;
    const auto status = search(&query, candidates, deadline);
    if (status != keychain_status::success)
        return prepared == keychain_status::noDefaultKeychain ? prepared : status;
    const auto variant = encoded(secret);
    const auto reply = m_keyring.connection().call(candidates.front().path.c_str(), itemInterface,
        "SetSecret", g_variant_new("(@(oayays))", variant.get()), "()", deadline);
    if (reply.outcome == CallOutcome::NoSuchObject)
        m_reports.tell(KeychainState::ItemGone);
    return reply.ok() ? keychain_status::success : m_keyring.writeFailed(reply);
}

KeychainStatus SecretServiceKeychain::add(const KeychainItem& item, Deadline deadline)
{
    const KeychainQuery same{item.accessGroup, item.service, item.account, true};
    if (!canBeAsked(same))
        return keychain_status::readOnly;
    std::string collection;
    auto status = m_keyring.prepare(collection, deadline);
    if (status == keychain_status::noDefaultKeychain)
        m_reports.tell(KeychainState::NoDefaultCollection);
    if (status != keychain_status::success)
        return status;
    std::vector<Candidate> candidates;
    status = search(&same, candidates, deadline);
    if (status == keychain_status::success)
        return keychain_status::duplicateItem;
    return status == keychain_status::itemNotFound ? create(collection, item, deadline) : status;
}

KeychainStatus SecretServiceKeychain::create(
    const std::string& collection, const KeychainItem& item, Deadline deadline)
{
    const KeychainQuery same{item.accessGroup, item.service, item.account, true};
    const auto label = item.service + " (" + item.account + ")";
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Item.Label",
        g_variant_new_string(label.c_str()));
    g_variant_builder_add(
        &properties, "{sv}", "org.freedesktop.Secret.Item.Attributes", attributesOf(&same));
    const auto secret = encoded(item.secret);
    const auto reply
        = m_keyring.connection().call(collection.c_str(), collectionInterface, "CreateItem",
            g_variant_new("(a{sv}@(oayays)b)", &properties, secret.get(), FALSE), "(oo)", deadline);
    if (!reply.ok())
        return m_keyring.writeFailed(reply);
    return promptOutcome(reply, 1, deadline);
}

KeychainStatus SecretServiceKeychain::promptOutcome(
    const SecretConnection::Reply& reply, gsize index, Deadline deadline)
{
    const gchar* prompt = nullptr;
    g_variant_get_child(reply.value.get(), index, "&o", &prompt);
    if (std::string_view(prompt) == "/")
        return keychain_status::success;
    return m_keyring.waitForPrompt(prompt, deadline);
}

} // namespace zarn::linux_backend
