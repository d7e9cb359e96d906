// SPDX-License-Identifier: MIT
#pragma once

#include "platform/terminal_services.h"

#include <functional>

namespace zarn {

class BundleTexts;
class SerialQueue;
class SettingsDomains;
class TerminalAlerts;
class TerminalStatus;
class WatchedKeychain;

/// What exists once per process and the commands share.
struct CommandContext {
    const TerminalServices& services;
    const BundleTexts& texts;
    SettingsDomains& domains;
    TerminalStatus& status;
    TerminalAlerts& alerts;
    WatchedKeychain& keychain;
    /// Made on first use: most commands write no secret.
    std::function<SerialQueue&()> keychainQueue;
};

} // namespace zarn
