// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace zarn {

/// What a command line asks for.
struct Command {
    enum class Verb { Add, Set, List, Use, Remove, Check, Show, Token, Api, Terms };
    Verb verb = Verb::List;
    /// The display name of a profile; empty where none was given.
    std::string name;
    std::string url;
    /// At most one of both is given.
    std::string user;
    std::string clientId;
    /// The HTTP method and the endpoint below the API root.
    std::string method;
    std::string path;
    /// A file, "-" or nothing.
    std::string data;
    bool ifMissing = false;
    bool yes = false;
    bool all = false;
    bool json = false;
    bool reveal = false;
    bool force = false;
    bool accept = false;
    /// The name of a keychain, or empty when nothing is forced.
    std::string keychain;
};

} // namespace zarn
