// SPDX-License-Identifier: MIT
#pragma once

#include "base/value.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace zarn {

/// What is known about the connection: one per process, never reset. Main thread only.
struct ConnectionState {
    /// Exactly as typed; may end in "/".
    std::string serverUrl;
    /// The user name, or the API client id.
    std::string username;
    /// The password, or the API client secret.
    std::string password;
    /// Standard Base64 of username + ":" + password.
    std::string base64Creds;
    /// 1: API client id and secret; any other value: user name and password.
    int useApiClient = 1;
    /// The state of the credential-mode check box when it was last read: 1 for user name and
    /// password.
    int useUsernameState = 0;
    /// Sent after "Bearer " by the API action.
    std::string token;
    /// "Basic" or "Bearer". No header depends on it: with Basic, `token` holds the credentials.
    std::string authScheme = "Basic";
    bool bearerTokenActive = false;
    std::optional<Date> tokenCreated;

    /// Empty until a server has reported its version.
    std::string serverVersion;
    std::int64_t versionMajor = 0;
    std::int64_t versionMinor = 0;
    std::int64_t versionPatch = 0;
    std::string versionBuild;
};

/// Called at most once, on the main thread, with an HTTP-style status code and one of "success",
/// "failed", "failedToConnect" and "failedToAuthenticate".
using ValidationCompletion
    = std::function<void(std::int64_t statusCode, const std::string& result)>;

} // namespace zarn
