// SPDX-License-Identifier: MIT
#pragma once

#include "profiles/credentials.h"

#include <optional>
#include <string>

namespace zarn {

class SettingsDomains;
struct ConnectionState;

/// Who logs in to a server, and with what.
struct StoredLogin {
    /// The user name, or the API client id.
    std::string username;
    std::string secret;
    bool usesApiClient = false;
};

/// Finds what the keychain holds for a registered server. Changes nothing but the kind of
/// credentials in the connection state, which is part of an item's name. Main thread only.
class StoredLogins {
public:
    struct Deps {
        ConnectionState& connection;
        SettingsDomains& domains;
        CredentialsFactory credentials;
    };
    explicit StoredLogins(Deps deps)
        : m_deps(std::move(deps))
    {
    }

    /// For the current server, what was proved last: the current-profile entry, if it is about this
    /// server. Else the first item of the server's host, of the kind of credentials that the
    /// settings name or, without one, of the other kind.
    std::optional<StoredLogin> find(const std::string& displayName, const std::string& server);

private:
    std::optional<StoredLogin> currentLogin(const std::string& server);
    std::optional<StoredLogin> itemOf(const std::string& server, bool usesApiClient);

    Deps m_deps;
};

} // namespace zarn
