// SPDX-License-Identifier: MIT
#pragma once

#include "profiles/credentials.h"
#include "profiles/profile_store.h"

#include <string>
#include <vector>

namespace zarn {

/// What the configuration view mirrors of the stored profiles. Main thread only.
struct LoginModel {
    ProfileMap availableServersDict;
    /// The display names in menu order.
    std::vector<std::string> sortedDisplayNames;
    /// The display name remembered from the last run, or the URL of the newest profile.
    std::string lastServer;
    /// The display name of the profile shown after start-up.
    std::string lastServerDN;
    /// What the keychain last answered to a refill of the credential fields.
    AccountMap accountDict;
};

} // namespace zarn
