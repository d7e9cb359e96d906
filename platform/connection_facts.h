// SPDX-License-Identifier: MIT
#pragma once

#include "platform/url_session.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zarn {

/// What an attempt to connect to a server found out, for a person to read. Neither holds
/// credentials, path or query.
struct ConnectionFacts {
    /// What it is, and its text, in the order in which a connection is made.
    std::vector<std::pair<std::string, std::string>> found;
    /// Why a request would get no response; nothing when the server is reached and trusted.
    std::optional<UrlError> refusal;
};

} // namespace zarn
