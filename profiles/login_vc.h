// SPDX-License-Identifier: MIT
#pragma once

#include "platform/view_controller.h"
#include "profiles/credential_fields.h"
#include "profiles/login_model.h"
#include "profiles/login_outlets.h"
#include "profiles/server_menu.h"
#include "profiles/server_update.h"

#include <functional>
#include <memory>
#include <string_view>

namespace zarn {

class AlertDisplay;
class Application;
class Clock;
class Console;
class DistributedNotificationCenter;
class LogFile;
class StatusLine;
class TextServices;
class WriteToLog;
struct ConnectionState;

/// The configuration view: pick, add, remove a server, and prove its credentials. Main thread only.
/// Keeps the outlets and the entry points; its collaborators do the work.
class LoginVC final : public ViewController, public TextFieldDelegate {
public:
    struct Deps {
        ConnectionState& connection;
        SettingsDomains& domains;
        const Clock& clock;
        const TextServices& texts;
        LogFile& logFile;
        WriteToLog& log;
        AlertDisplay& alerts;
        Application& application;
        Console& console;
        DistributedNotificationCenter& notificationCenter;
        CredentialsFactory credentials;
        std::function<std::shared_ptr<TokenDelegate>()> makeTokenDelegate;
        StatusLine& status;
    };
    explicit LoginVC(const Deps& deps);
    ~LoginVC() override;
    LoginVC(const LoginVC&) = delete;
    LoginVC& operator=(const LoginVC&) = delete;

    void connectOutlets(OutletSource& source) override { m_outlets.connect(source); }
    void viewDidLoad() override;
    void viewDidAppear() override;
    void viewWillDisappear() override;
    bool performAction(std::string_view action, Button* button) override;
    void controlTextDidEndEditing(TextField* field) override
    {
        m_fields.credentialFieldDidEndEditing(field);
    }

    const LoginModel& model() const { return m_model; }
    /// How the last proof of credentials ended; nothing until one has ended.
    const std::optional<UpdateOutcome>& updateOutcome() const { return m_update.outcome(); }

private:
    void updateServerInfo_Action(Button* sender);
    void quit_Action(Button* sender);
    void restoreProfiles();
    void listProfiles();
    bool showIfLast(const std::string& displayName, const Value::Dictionary& record);
    void leaveAddMode();
    void showProfileOfLastServer();

    Deps m_deps;
    LoginOutlets m_outlets;
    LoginModel m_model;
    ProfileStore m_store;
    CredentialFields m_fields;
    ServerMenu m_menu;
    ServerUpdate m_update;
};

} // namespace zarn
