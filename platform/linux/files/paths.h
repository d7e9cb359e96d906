// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace zarn::linux_backend {

/// The folders of this user's files; empty without a home directory.
struct Paths {
    /// HOME, else the home directory of the password database; absolute, without trailing "/".
    std::string home;
    /// $XDG_CONFIG_HOME/zarn-actions (default ~/.config); a relative value counts as unset.
    std::string config;
    /// $XDG_DATA_HOME/zarn-actions (default ~/.local/share).
    std::string data;
    /// $XDG_STATE_HOME/zarn-actions (default ~/.local/state).
    std::string state;

    static Paths fromEnvironment();
};

} // namespace zarn::linux_backend
