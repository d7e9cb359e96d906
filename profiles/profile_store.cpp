// SPDX-License-Identifier: MIT
#include "profiles/profile_store.h"

#include "base/fatal.h"
#include "platform/clock.h"
#include "platform/settings.h"
#include "profiles/settings_domains.h"

#include <algorithm>
#include <utility>

namespace zarn {

namespace {

constexpr std::string_view profilesKey = "serversDict";

Date dateOf(const Value& value)
{
    if (!value.date())
        fatalError("a profile whose date is no date");
    return *value.date();
}

const Value::Dictionary& recordOf(const ProfileMap::value_type& entry)
{
    return *entry.second.dictionary();
}

/// The stored map, if all its values are records.
ProfileMap mapOf(std::optional<Value> stored)
{
    auto* dictionary = stored ? stored->dictionary() : nullptr;
    if (!dictionary || !std::all_of(dictionary->begin(), dictionary->end(), [](const auto& entry) {
            return entry.second.dictionary() != nullptr;
        }))
        return {};
    return std::move(*dictionary);
}

} // namespace

ProfileMap ProfileStore::storedProfiles() const
{
    return mapOf(m_domains.sharedProfileDefaults().object(profilesKey));
}

void ProfileStore::dropUnlisted(ProfileMap& profiles)
{
    std::erase_if(profiles, [](const auto& entry) {
        return entry.first.empty()
            || stringMember(recordOf(entry), "server").value_or("").starts_with('/');
    });
}

ProfileMap ProfileStore::loadProfiles()
{
    auto& domain = m_domains.sharedProfileDefaults();
    auto stored = domain.object(profilesKey);
    const auto* dictionary = stored ? stored->dictionary() : nullptr;
    if (!dictionary || dictionary->empty()) {
        domain.set(profilesKey, Value::Dictionary{});
        stored = domain.object(profilesKey);
    }
    return mapOf(std::move(stored));
}

std::string ProfileStore::validateCurrentServer(const ProfileMap& profiles)
{
    auto& domain = m_domains.actionsDefaults();
    auto current = domain.string("currentServer").value_or("");
    if (profiles.contains(current))
        return current;
    domain.remove("currentServer");
    return "";
}

std::string ProfileStore::pickMostRecentProfile(const ProfileMap& profiles) const
{
    std::string newest;
    Date reference;
    bool isFirst = true;
    for (const auto& entry : profiles) {
        const auto& record = recordOf(entry);
        const auto date = record.find("date");
        if (isFirst) {
            isFirst = false;
            newest = stringMember(record, "server").value_or("");
            reference = date != record.end() && date->second.date() ? *date->second.date()
                                                                    : m_clock.now();
            continue;
        }
        if (date == record.end())
            fatalError("a profile without a date");
        if (dateOf(date->second) > reference) {
            newest = stringMember(record, "server").value_or("");
            reference = dateOf(date->second);
        }
    }
    return newest;
}

void ProfileStore::trimProfiles(ProfileMap& profiles) const
{
    if (profiles.size() <= profileTrimThreshold)
        return;
    // Removed are profiles without a date, in map order, then those dated before now, oldest first
    // and in map order where equal. A malformed date matters only if the walk reaches it.
    const auto now = m_clock.now();
    std::size_t surplus = profiles.size() - profileTrimThreshold;
    std::vector<std::pair<Date, ProfileMap::iterator>> dated;
    for (auto it = profiles.begin(); it != profiles.end();) {
        const auto& record = recordOf(*it);
        const auto date = record.find("date");
        if (date == record.end()) {
            it = profiles.erase(it);
            if (--surplus == 0)
                return;
            continue;
        }
        if (dateOf(date->second) < now)
            dated.emplace_back(dateOf(date->second), it);
        ++it;
    }
    const auto removed = std::min(surplus, dated.size());
    // Stable: the map's own order breaks ties.
    std::stable_sort(
        dated.begin(), dated.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (std::size_t i = 0; i < removed; ++i)
        profiles.erase(dated[i].second);
}

Value::Dictionary ProfileStore::newRecord(const std::string& server) const
{
    return {{"server", server}, {"date", m_clock.now()}};
}

void ProfileStore::addProfile(
    ProfileMap& profiles, const std::string& displayName, const std::string& server)
{
    profiles[displayName] = newRecord(server);
    writeProfiles(profiles);
}

void ProfileStore::writeProfiles(const ProfileMap& profiles)
{
    m_domains.sharedProfileDefaults().set(profilesKey, profiles);
}

void ProfileStore::selectProfile(const std::string& displayName)
{
    m_domains.actionsDefaults().set("currentServer", displayName);
}

void ProfileStore::rememberCurrent(const std::string& displayName, const std::string& username)
{
    selectProfile(displayName);
    m_domains.actionsDefaults().set("username", username);
}

} // namespace zarn
