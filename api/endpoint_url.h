// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace zarn {

/// Replaces every "//api" by "/api", so that a server URL may end in "/". A host whose name begins
/// with "api" loses a slash of its scheme as well, and cannot be reached. That is kept on purpose.
std::string collapseApiSlashes(std::string_view text);

/// The address of an endpoint below the API root, which `endpoint` names without a leading "/".
std::string apiUrlText(std::string_view serverUrl, std::string_view endpoint);

/// The API version that serves an endpoint: "v1/" or "v2/".
std::string_view apiPathPrefix(std::string_view endpoint);

} // namespace zarn
