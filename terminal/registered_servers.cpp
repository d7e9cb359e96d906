// SPDX-License-Identifier: MIT
#include "terminal/registered_servers.h"

#include "platform/settings.h"
#include "platform/text_services.h"
#include "profiles/settings_domains.h"

namespace zarn {

std::string RegisteredServers::currentName() const
{
    return m_domains.actionsDefaults().string("currentServer").value_or("");
}

ProfileMap RegisteredServers::listed() const
{
    auto profiles = m_store.storedProfiles();
    m_store.trimProfiles(profiles);
    ProfileStore::dropUnlisted(profiles);
    return profiles;
}

ProfileFacts RegisteredServers::factsOf(
    const std::string& name, const Value::Dictionary& record) const
{
    ProfileFacts facts{.name = name,
        .server = stringMember(record, "server").value_or(""),
        .added = std::nullopt,
        .isCurrent = name == currentName(),
        .username = std::nullopt,
        .usesApiClient = std::nullopt};
    if (const auto date = record.find("date"); date != record.end() && date->second.date())
        facts.added = *date->second.date();
    if (facts.isCurrent) {
        const auto& actions = m_domains.actionsDefaults();
        facts.username = actions.string("username").value_or("");
        facts.usesApiClient = actions.integer("useUsername") == 0;
    }
    return facts;
}

std::vector<ProfileFacts> RegisteredServers::all(const TextServices& texts) const
{
    const auto profiles = listed();
    std::vector<std::string> names;
    for (const auto& [name, record] : profiles)
        names.push_back(name);
    texts.sortLocalized(names);
    std::vector<ProfileFacts> facts;
    for (const auto& name : names)
        facts.push_back(factsOf(name, *profiles.at(name).dictionary()));
    return facts;
}

std::optional<ProfileFacts> RegisteredServers::find(const std::string& name) const
{
    const auto profiles = listed();
    const auto found = profiles.find(name.empty() ? currentName() : name);
    if (found == profiles.end())
        return std::nullopt;
    return factsOf(found->first, *found->second.dictionary());
}

} // namespace zarn
