// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zarn {

/// Where the program of a churn keeps what it stores.
struct ChurnFolders {
    explicit ChurnFolders(const std::string& top)
        : home(top)
        , settings(top + "/config/zarn-actions")
        , data(top + "/data/zarn-actions")
        , state(top + "/state/zarn-actions")
    {
    }
    std::string home;
    std::string settings;
    std::string data;
    std::string state;
};

inline constexpr int churnedProfiles = 30;

/// What a profile of the churn is registered with; `number` is below churnedProfiles.
std::string churnedName(int number);
std::string churnedServer(int number);
inline constexpr std::string_view churnedAccount = "client";

/// The program without a window and without a network, on real settings files, a real file
/// keychain and a real log: starts, and adds, selects and removes profiles at random until it is
/// killed. Says so on `journal`, a line before and a line after each act:
///     "add NUMBER SECRET" or "remove NUMBER" or "select NUMBER", then "done".
/// Ends with 1 when something is not as it was left.
[[noreturn]] void churnUntilKilled(const ChurnFolders& folders, std::uint32_t seed, int journal);

} // namespace zarn
