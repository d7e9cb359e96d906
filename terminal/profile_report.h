// SPDX-License-Identifier: MIT
#pragma once

#include "base/value.h"
#include "platform/attributed_text.h"

#include <optional>
#include <string>
#include <vector>

/// What commands print, for people or as JSON. docs/ has a schema for each JSON form. Any thread.
namespace zarn {

struct StoredLogin;

/// A registered server as it is stored.
struct ProfileFacts {
    std::string name;
    std::string server;
    std::optional<Date> added;
    bool isCurrent = false;
    /// Who logs in, where that is known without its secret, and how.
    std::optional<std::string> username;
    std::optional<bool> usesApiClient;
};

/// What asking one server with its stored credentials gave.
struct CheckFacts {
    std::string name;
    std::string server;
    int exitStatus = 0;
    /// Empty when it works.
    std::string cause;
};

std::string listText(const std::vector<ProfileFacts>& profiles);
std::string listJson(const std::vector<ProfileFacts>& profiles);
/// With `login`, its user and secret too.
std::string profileText(const ProfileFacts& profile, const StoredLogin* login);
std::string profileJson(const ProfileFacts& profile, const StoredLogin* login);
/// One line.
std::string checkText(const CheckFacts& check);
std::string checksJson(const std::vector<CheckFacts>& checks);
std::string tokenJson(const std::string& server, const std::string& token);
/// The addresses of links follow them.
std::string termsText(const AttributedText& terms);
std::string termsJson(const AttributedText& terms, bool areAccepted);
/// "2026-01-31T12:00:00Z".
std::string dateText(Date date);

} // namespace zarn
