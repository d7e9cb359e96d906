// SPDX-License-Identifier: MIT
#include "profiles/stored_login.h"

#include "api/connection_state.h"
#include "base/base64.h"
#include "platform/settings.h"
#include "profiles/server_update.h"
#include "profiles/server_url.h"
#include "profiles/settings_domains.h"

namespace zarn {

std::optional<StoredLogin> StoredLogins::find(
    const std::string& displayName, const std::string& server)
{
    const auto& settings = m_deps.domains.actionsDefaults();
    if (settings.string("currentServer") == displayName) {
        if (auto login = currentLogin(server))
            return login;
    }
    const bool prefersApiClient = settings.integer("useUsername") == 0;
    if (auto login = itemOf(server, prefersApiClient))
        return login;
    return itemOf(server, !prefersApiClient);
}

std::optional<StoredLogin> StoredLogins::itemOf(const std::string& server, bool usesApiClient)
{
    m_deps.connection.useApiClient = usesApiClient ? 1 : 0;
    const auto accounts = m_deps.credentials()->retrieve(hostFromServerURL(server));
    if (accounts.empty())
        return std::nullopt;
    const auto& [username, secret] = *accounts.begin();
    return StoredLogin{username, secret, usesApiClient};
}

// The text cannot be taken apart in general: its values are not escaped. But what stands before and
// behind the secret is known, so that the text is compared instead.
std::optional<StoredLogin> StoredLogins::currentLogin(const std::string& server)
{
    const auto entries = m_deps.credentials()->retrieve(std::string(currentProfileService));
    const auto text = entries.empty() ? std::nullopt : base64Decoded(entries.begin()->second);
    if (!text)
        return std::nullopt;
    ConnectionState expected;
    expected.serverUrl = server;
    expected.username = m_deps.domains.actionsDefaults().string("username").value_or("");
    for (const bool usesApiClient : {true, false}) {
        expected.useApiClient = usesApiClient ? 1 : 0;
        const auto empty = currentProfileJson(expected);
        const auto tail = empty.substr(empty.rfind(R"(", "useApiClient)"));
        const auto head = empty.substr(0, empty.size() - tail.size());
        if (text->size() < empty.size() || !text->starts_with(head) || !text->ends_with(tail))
            continue;
        m_deps.connection.useApiClient = expected.useApiClient;
        return StoredLogin{expected.username,
            text->substr(head.size(), text->size() - empty.size()), usesApiClient};
    }
    return std::nullopt;
}

} // namespace zarn
