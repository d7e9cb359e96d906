// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace zarn {

/// The third "/"-separated piece of a server URL when there are at least three, else the whole
/// text; then cut before the first ":". "https://host:8443/" and "host:8443" both give "host".
std::string hostFromServerURL(std::string_view serverUrl);

/// Drops every "/" from the end.
std::string removeTrailingSlashes(std::string_view text);

} // namespace zarn
