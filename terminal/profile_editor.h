// SPDX-License-Identifier: MIT
#pragma once

#include "base/wipe.h"
#include "log/write_to_log.h"
#include "profiles/login_vc.h"
#include "profiles/status_line.h"
#include "terminal/command_context.h"
#include "terminal/exit_code.h"
#include "terminal/kept_files.h"
#include "terminal/plain_screen.h"
#include "terminal/terminal_status.h"
#include "terminal/wiped_connection.h"

#include <memory>
#include <string>

namespace zarn {

/// Who logs in to which server, and with what.
struct Registration {
    std::string name;
    std::string url;
    std::string username;
    bool usesApiClient = false;
    Wiped<std::string> secret;
};

/// Changes profiles by using the configuration view as its user does, so that what is stored, sent
/// and logged is the same. One per process, with the instance lock held. Main thread only.
class ProfileEditor {
public:
    /// `keychain` is that of the context, or one that stands in for it.
    ProfileEditor(const CommandContext& context, Keychain& keychain);
    ~ProfileEditor();
    ProfileEditor(const ProfileEditor&) = delete;
    ProfileEditor& operator=(const ProfileEditor&) = delete;

    /// Whether the menu has this server.
    bool has(const std::string& name) const;
    void use(const std::string& name);
    void remove(const std::string& name);
    /// Each asks the server, and stores only what it accepts. The status has the cause of a
    /// failure.
    ExitCode add(const Registration& registration);
    ExitCode set(const Registration& registration);

private:
    std::shared_ptr<Credentials> makeCredentials();
    std::shared_ptr<TokenDelegate> makeTokenDelegate();
    void choose(const std::string& title);
    void type(const Registration& registration);
    ExitCode prove();
    Button& updateButton() { return *m_screen.button("updateServerInfo_Button"); }

    CommandContext m_context;
    Keychain& m_keychain;
    WipedConnection m_connection;
    KeptFiles m_files;
    LogFile m_logFile;
    WriteToLog m_log;
    PlainScreen m_screen;
    PlainApplication m_application;
    PlainNotificationCenter m_notificationCenter;
    SilentConsole m_console;
    StatusLine m_statusLine{m_console};
    std::unique_ptr<LoginVC> m_login;
};

/// The exit code for how a server replied to credentials; see ValidationCompletion.
ExitCode exitCodeOf(const UpdateOutcome& outcome);

} // namespace zarn
