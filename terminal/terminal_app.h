// SPDX-License-Identifier: MIT
#pragma once

#include "api/bundle_texts.h"
#include "platform/product_texts.h"
#include "platform/terminal_services.h"
#include "profiles/settings_domains.h"
#include "terminal/changing_commands.h"
#include "terminal/command.h"
#include "terminal/exit_code.h"
#include "terminal/reading_commands.h"
#include "terminal/terminal_status.h"
#include "terminal/watched_keychain.h"

#include <memory>
#include <optional>

namespace zarn {

class SerialQueue;

/// Runs one command. Everything that exists once per process, wired together; the keychain queue
/// ends first, so that its work finds all that it uses. Main thread only.
class TerminalApp {
public:
    TerminalApp(const TerminalServices& services, ProductTexts texts);
    ~TerminalApp();
    TerminalApp(const TerminalApp&) = delete;
    TerminalApp& operator=(const TerminalApp&) = delete;

    /// Returns the exit code so far; finish() has the last word.
    ExitCode run(const Command& command);
    /// After run(): waits for the keychain writes that were accepted and returns the exit code of
    /// the process. Nothing when time ran out; a write still uses this object then, so the process
    /// must end without destroying it.
    [[nodiscard]] std::optional<ExitCode> finish(ExitCode code);

private:
    ExitCode dispatch(const Command& command);
    ExitCode terms(const Command& command);
    SerialQueue& keychainQueue();

    TerminalServices m_services;
    ProductTexts m_texts;
    BundleTexts m_bundleTexts;
    SettingsDomains m_domains;
    TerminalStatus m_status;
    TerminalAlerts m_alerts;
    WatchedKeychain m_keychain;
    CommandContext m_context;
    ReadingCommands m_reading;
    ChangingCommands m_changing;
    // Last, so that it ends first: its work uses what stands above.
    std::unique_ptr<SerialQueue> m_keychainQueue;
};

} // namespace zarn
