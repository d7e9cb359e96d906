// SPDX-License-Identifier: MIT
#include "profiles/login_vc.h"

#include "api/connection_state.h"
#include "base/fatal.h"
#include "log/write_to_log.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "platform/console.h"
#include "platform/file_manager.h"
#include "platform/notification_center.h"
#include "platform/settings.h"
#include "profiles/settings_domains.h"
#include "profiles/status_line.h"

#include <algorithm>

namespace zarn {

LoginVC::LoginVC(const Deps& deps)
    : m_deps(deps)
    , m_store(deps.domains, deps.clock)
    , m_fields({.outlets = m_outlets,
          .model = m_model,
          .connection = deps.connection,
          .domains = deps.domains,
          .credentials = deps.credentials,
          .console = deps.console,
          .setPreferredContentSize
          = [this](int width, int height) { view().setPreferredContentSize(width, height); }})
    , m_menu({.outlets = m_outlets,
          .model = m_model,
          .store = m_store,
          .fields = m_fields,
          .texts = deps.texts,
          .alerts = deps.alerts,
          .application = deps.application})
    , m_update({.outlets = m_outlets,
          .model = m_model,
          .store = m_store,
          .menu = m_menu,
          .connection = deps.connection,
          .credentials = deps.credentials,
          .makeTokenDelegate = deps.makeTokenDelegate,
          .log = deps.log,
          .alerts = deps.alerts,
          .application = deps.application})
{
}

LoginVC::~LoginVC()
{
    m_deps.status.setLabel(nullptr);
}

void LoginVC::viewDidLoad()
{
    m_deps.status.setLabel(&m_outlets.status_Label.get());
    if (!m_deps.logFile.files().fileExists(m_deps.logFile.currentPath()))
        m_deps.logFile.startNewLogFile();
    auto& actionsDefaults = m_deps.domains.actionsDefaults();
    m_fields.applyCredentialFieldsMode(actionsDefaults.integer("hideCreds") == 1 ? 1 : 0);
    for (auto* field : {&m_outlets.zarnProServer_textfield, &m_outlets.zarnProUsername_textfield,
             &m_outlets.zarnProPassword_textfield})
        field->get().setDelegate(this);
    for (auto* field : {&m_outlets.displayName_TextField, &m_outlets.zarnProServer_textfield,
             &m_outlets.zarnProUsername_textfield, &m_outlets.zarnProPassword_textfield})
        field->get().setOnChange([&status = m_deps.status] { status.userActed(); });
    m_model.lastServer = actionsDefaults.string("currentServer").value_or("");
    const auto stored = m_fields.restoreCredentialMode();
    m_deps.console.writeLine("[viewDidLoad] username: " + std::to_string(stored));
    restoreProfiles();
    m_deps.application.activateIgnoringOtherApps();
}

void LoginVC::restoreProfiles()
{
    auto& profiles = m_model.availableServersDict;
    profiles = m_store.loadProfiles();
    m_model.lastServer = m_store.validateCurrentServer(profiles);
    // This is a URL, while the walk below looks for a display name: the newest profile is shown
    // only when its name equals its URL. Kept as it is.
    if (m_model.lastServer.empty())
        m_model.lastServer = m_store.pickMostRecentProfile(profiles);
    m_store.trimProfiles(profiles);
    listProfiles();
    m_outlets.saveCreds_button->setState(
        buttonState(m_deps.domains.standardDefaults().integer("saveCreds")));
    if (profiles.empty()) {
        m_outlets.zarnProServer_textfield->setStringValue("");
        m_menu.rebuildServerMenu({});
        m_outlets.selectServer_Button->selectItem(ServerMenu::addServerTitle);
        m_outlets.updateServerInfo_Button->setTitle("Add");
        m_menu.serverMenuSelectionChanged();
        m_fields.applyCredentialFieldsMode(2);
    } else if (!m_outlets.zarnProServer_textfield->stringValue().empty()) {
        m_fields.fillCredentialsFromKeychain();
    }
}

void LoginVC::listProfiles()
{
    auto& profiles = m_model.availableServersDict;
    bool found = false;
    // No profile has to be made of a remembered server: with an empty map none is remembered. The
    // current name is a key of the map, the newest URL comes from it, and trimming never empties
    // it.
    ProfileStore::dropUnlisted(profiles);
    for (const auto& [name, record] : profiles) {
        m_model.sortedDisplayNames.push_back(name);
        found = showIfLast(name, *record.dictionary()) || found;
    }
    if (found)
        m_outlets.selectServer_Button->selectItem(m_model.lastServerDN);
    else
        m_outlets.emptyCredentialFields();
    m_menu.rebuildServerMenu(m_model.sortedDisplayNames);
    if (found)
        m_outlets.selectServer_Button->selectItem(m_model.lastServerDN);
    else
        m_outlets.selectServer_Button->selectNone();
}

bool LoginVC::showIfLast(const std::string& displayName, const Value::Dictionary& record)
{
    if (displayName != m_model.lastServer)
        return false;
    m_model.lastServerDN = displayName;
    m_outlets.displayName_TextField->setStringValue(displayName);
    m_outlets.zarnProServer_textfield->setStringValue(stringMember(record, "server").value_or(""));
    m_outlets.zarnProUsername_textfield->setStringValue(
        m_deps.domains.actionsDefaults().string("username").value_or(""));
    return true;
}

void LoginVC::viewDidAppear()
{
    if (!m_deps.domains.standardDefaults().boolean("agreedToTermsOfUse"))
        view().performSegue("termsOfUse");
}

void LoginVC::viewWillDisappear()
{
    // This view never registers itself. The removal is kept: it costs nothing, and no registration
    // made elsewhere for this view can outlive it.
    m_deps.notificationCenter.removeObserver(this, interfaceThemeChanged);
}

bool LoginVC::performAction(std::string_view action, Button* button)
{
    m_deps.status.userActed();
    if (action == "updateServerInfo_Action")
        updateServerInfo_Action(button);
    else if (action == "selectServer_Action")
        m_menu.serverMenuSelectionChanged();
    else if (action == "hideCreds_action")
        m_fields.hideCredsToggled();
    else if (action == "useUsername_action")
        m_fields.useUsernameToggled();
    else if (action == "saveCredentials_Action")
        m_fields.saveCredentialsToggled();
    else if (action == "quit_Action")
        quit_Action(button);
    else
        return false;
    return true;
}

void LoginVC::updateServerInfo_Action(Button* sender)
{
    m_update.updateServerInfo(sender ? *sender : m_outlets.updateServerInfo_Button.get());
}

void LoginVC::quit_Action(Button* sender)
{
    if ((sender ? *sender : m_outlets.quit_Button.get()).title() == "Quit")
        m_deps.application.terminate();
    else if (m_outlets.updateServerInfo_Button->title() != "Add")
        view().dismissViewController();
    else
        leaveAddMode();
}

void LoginVC::leaveAddMode()
{
    m_outlets.displayName_Label->setStringValue("Server:");
    m_outlets.selectServer_Button->setHidden(false);
    m_outlets.displayName_TextField->setHidden(true);
    m_outlets.serverURL_Label->setHidden(false);
    m_outlets.zarnProServer_textfield->setHidden(false);
    m_outlets.zarnProServer_textfield->setEditable(false);
    m_outlets.hideCreds_button->setHidden(false);
    // Before the keychain is asked: the kind of credentials is part of an item's name.
    m_fields.restoreCredentialMode();
    if (m_model.lastServer.empty()) {
        m_outlets.updateServerInfo_Button->setEnabled(false);
        m_outlets.zarnProServer_textfield->setEnabled(false);
        m_outlets.zarnProUsername_textfield->setEnabled(false);
        m_outlets.zarnProPassword_textfield->setEnabled(false);
    } else {
        showProfileOfLastServer();
    }
    m_outlets.quit_Button->setTitle("Quit");
    m_outlets.updateServerInfo_Button->setTitle("Set");
}

// `lastServer` mostly holds a display name while the walk compares URLs, so that mostly the last
// profile of the map is taken. Do not compare names instead: only a profile that start-up found by
// its URL counts as the one to come back to.
void LoginVC::showProfileOfLastServer()
{
    std::optional<std::string> server;
    std::string displayName;
    for (const auto& [name, record] : m_model.availableServersDict) {
        server = stringMember(*record.dictionary(), "server");
        if (!server)
            fatalError("a profile without a server URL");
        displayName = name;
        if (*server == m_model.lastServer)
            break;
    }
    if (!server)
        fatalError("no profile to return to");
    m_outlets.selectServer_Button->selectItem(displayName);
    m_outlets.displayName_TextField->setStringValue(displayName);
    m_outlets.zarnProServer_textfield->setStringValue(*server);
    if (server->empty())
        m_outlets.zarnProServer_textfield->setEditable(true);
    m_fields.fillCredentialsFromKeychain();
}

} // namespace zarn
