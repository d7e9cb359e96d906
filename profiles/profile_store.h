// SPDX-License-Identifier: MIT
#pragma once

#include "base/value.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zarn {

class Clock;
class SettingsDomains;

/// Display name to record ("server": text, "date": date).
using ProfileMap = Value::Dictionary;

/// After trimming at most this many profiles are left.
inline constexpr std::size_t profileTrimThreshold = 39;

/// The stored profiles and which one is current. Holds nothing itself: callers pass the map they
/// mirror. Main thread only.
class ProfileStore {
public:
    ProfileStore(SettingsDomains& domains, const Clock& clock)
        : m_domains(domains)
        , m_clock(clock)
    {
    }

    /// The stored map. A missing, empty or malformed one is replaced by an empty dictionary; one
    /// whose values are not all records reads as empty and is overwritten by the next write.
    ProfileMap loadProfiles();
    /// The same map; what is stored stays as it is.
    ProfileMap storedProfiles() const;
    /// Removes what no menu shows: a profile without a name, or whose "server" begins with "/".
    static void dropUnlisted(ProfileMap& profiles);
    /// The current display name, or "" when it names no profile; it is forgotten then.
    std::string validateCurrentServer(const ProfileMap& profiles);
    /// The "server" of the newest record, or "". A later record without a date stops the process.
    std::string pickMostRecentProfile(const ProfileMap& profiles) const;
    /// Removes records until at most profileTrimThreshold are left: an empty or undated one first,
    /// else the oldest. Records dated now or later are never chosen; it stops when nothing is.
    void trimProfiles(ProfileMap& profiles) const;

    /// Puts a new record in place of any of that name and writes the map.
    void addProfile(
        ProfileMap& profiles, const std::string& displayName, const std::string& server);
    void writeProfiles(const ProfileMap& profiles);
    void selectProfile(const std::string& displayName);
    /// Writes the current display name and username.
    void rememberCurrent(const std::string& displayName, const std::string& username);
    Value::Dictionary newRecord(const std::string& server) const;

    SettingsDomains& domains() { return m_domains; }

private:
    SettingsDomains& m_domains;
    const Clock& m_clock;
};

} // namespace zarn
