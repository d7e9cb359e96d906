// SPDX-License-Identifier: MIT
#pragma once

#include "profiles/profile_store.h"
#include "terminal/profile_report.h"

#include <optional>
#include <string>
#include <vector>

namespace zarn {

class TextServices;

/// The profiles as they are stored, for commands that change none. Main thread only.
class RegisteredServers {
public:
    RegisteredServers(SettingsDomains& domains, const Clock& clock)
        : m_domains(domains)
        , m_store(domains, clock)
    {
    }

    /// Those that the menu shows, in its order.
    std::vector<ProfileFacts> all(const TextServices& texts) const;
    /// The one of that name; for an empty name, the current one.
    std::optional<ProfileFacts> find(const std::string& name) const;

private:
    ProfileMap listed() const;
    ProfileFacts factsOf(const std::string& name, const Value::Dictionary& record) const;
    std::string currentName() const;

    SettingsDomains& m_domains;
    ProfileStore m_store;
};

} // namespace zarn
