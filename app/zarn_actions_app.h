// SPDX-License-Identifier: MIT
#pragma once

#include "api/bundle_texts.h"
#include "api/connection_state.h"
#include "app/app_delegate.h"
#include "app/appearance.h"
#include "app/my_alert.h"
#include "log/write_to_log.h"
#include "platform/product_texts.h"
#include "platform/services.h"
#include "profiles/settings_domains.h"
#include "profiles/status_line.h"
#include "update/version_check.h"

#include <memory>
#include <string_view>

namespace zarn {

class SerialQueue;
class TokenDelegate;
class ViewController;
class Credentials;

/// Everything that exists once per process, wired together. A test that makes one has a fresh
/// process. The keychain queue ends first, so that its work finds all that it uses. Main thread
/// only.
class ZarnActionsApp {
public:
    ZarnActionsApp(const Services& services, const ProductTexts& texts);
    ~ZarnActionsApp();
    ZarnActionsApp(const ZarnActionsApp&) = delete;
    ZarnActionsApp& operator=(const ZarnActionsApp&) = delete;

    /// Runs the application's main loop. Returns the exit code of the process.
    int run();
    /// After run(): waits for the keychain writes that were accepted, 10 s at most, and longer only
    /// while the user has to unlock the keychain. False when time ran out; a write still uses this
    /// object then, so the process must end without destroying it.
    [[nodiscard]] bool finishKeychainWrites();

    /// The controller of a storyboard's custom class; nullptr for an unknown one.
    std::unique_ptr<ViewController> makeViewController(std::string_view customClass);
    AppDelegate& delegate() { return m_delegate; }
    ConnectionState& connection() { return m_connection; }
    LogFile& logFile() { return m_logFile; }

private:
    std::shared_ptr<TokenDelegate> makeTokenDelegate();
    std::shared_ptr<Credentials> makeCredentials();
    SerialQueue& keychainQueue();

    Services m_services;
    ConnectionState m_connection;
    BundleTexts m_bundleTexts;
    SettingsDomains m_domains;
    LogFile m_logFile;
    WriteToLog m_log;
    Appearance m_appearance;
    MyAlert m_alert;
    StatusLine m_status;
    VersionCheck m_versionCheck;
    AppDelegate m_delegate;
    // Last, so that it ends first: its work uses what stands above.
    std::unique_ptr<SerialQueue> m_keychainQueue;
};

} // namespace zarn
