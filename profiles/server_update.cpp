// SPDX-License-Identifier: MIT
#include "profiles/server_update.h"

#include "api/alert_display.h"
#include "api/connection_state.h"
#include "api/token_delegate.h"
#include "base/base64.h"
#include "log/write_to_log.h"
#include "platform/application.h"
#include "platform/settings.h"
#include "profiles/server_url.h"
#include "profiles/settings_domains.h"

namespace zarn {

std::string currentProfileJson(const ConnectionState& connection)
{
    return R"({"server":")" + removeTrailingSlashes(connection.serverUrl) + R"(", "username":")"
        + connection.username + R"(", "password":")" + connection.password
        + R"(", "useApiClient":")" + std::to_string(connection.useApiClient) + R"("})";
}

void ServerUpdate::updateServerInfo(const Button& sender)
{
    auto& outlets = m_deps.outlets;
    const auto resultBox = std::make_shared<std::string>();
    m_outcome.reset();
    outlets.quit_Button->setEnabled(false);
    outlets.spinner_PI->startAnimation();
    // Only an add needs a name; "Set" lets a blank one through, it creates no record.
    // Where the question for a name ends the flow, the spinner goes on and the button stays off
    // until a later click completes; both say that something is unfinished.
    if (outlets.displayName_TextField->stringValue().empty() && sender.title() == "Add"
        && !offerHostAsDisplayName())
        return;
    outlets.zarnProServer_textfield->setEditable(false);
    outlets.updateServerInfo_Button->setEnabled(false);
    auto& connection = m_deps.connection;
    connection.serverUrl = outlets.zarnProServer_textfield->stringValue();
    connection.username = outlets.zarnProUsername_textfield->stringValue();
    connection.password = outlets.zarnProPassword_textfield->stringValue();
    connection.base64Creds = base64Encoded(connection.username + ":" + connection.password);
    m_deps.makeTokenDelegate()->getToken(connection.serverUrl, connection.base64Creds,
        [this, resultBox, life = std::weak_ptr(m_life)](
            std::int64_t statusCode, const std::string& result) {
            if (!life.expired())
                handleTokenResult(statusCode, result, resultBox);
        });
}

bool ServerUpdate::offerHostAsDisplayName()
{
    auto& outlets = m_deps.outlets;
    const auto host
        = [&] { return hostFromServerURL(outlets.zarnProServer_textfield->stringValue()); };
    const auto answer = m_deps.alerts.display(
        "Attention:", "Display name cannot be blank.\nUse " + host() + "?", "Cancel");
    if (answer == "Cancel" || host().empty())
        return false;
    outlets.displayName_TextField->setStringValue(host());
    return true;
}

void ServerUpdate::handleTokenResult(
    std::int64_t statusCode, const std::string& result, const ResultBox& resultBox)
{
    if (result == "success")
        *resultBox = succeed();
    else if (result == "failedToConnect")
        *resultBox = failToConnect();
    else if (result == "failedToAuthenticate")
        *resultBox = failToAuthenticate(statusCode);
    m_deps.outlets.updateServerInfo_Button->setEnabled(true);
    m_deps.outlets.spinner_PI->stopAnimation();
    if (*resultBox == "Quit")
        m_deps.application.terminate();
    m_deps.outlets.quit_Button->setEnabled(true);
    m_outcome = {statusCode, result};
}

std::string ServerUpdate::succeed()
{
    auto& outlets = m_deps.outlets;
    saveSecrets();
    const bool isAdded = outlets.updateServerInfo_Button->title() == "Add";
    if (isAdded) {
        saveProfile();
        storeCredentialMode();
    }
    m_deps.store.rememberCurrent(
        outlets.displayName_TextField->stringValue(), m_deps.connection.username);
    outlets.displayName_Label->setStringValue("Server:");
    outlets.selectServer_Button->setHidden(false);
    outlets.displayName_TextField->setHidden(true);
    outlets.quit_Button->setTitle("Quit");
    outlets.updateServerInfo_Button->setTitle("Set");
    return m_deps.alerts.display(
        "", outlets.selectServer_Button->titleOfSelectedItem() + " was successfully set", "Quit");
}

// Both entries are written whatever the save-credentials check box says: the actions need them.
void ServerUpdate::saveSecrets() const
{
    const auto& connection = m_deps.connection;
    m_deps.credentials()->save(
        hostFromServerURL(connection.serverUrl), connection.username, connection.password);
    m_deps.credentials()->save(std::string(currentProfileService),
        std::string(currentProfileAccount), base64Encoded(currentProfileJson(connection)));
}

void ServerUpdate::saveProfile()
{
    auto& model = m_deps.model;
    const auto displayName = m_deps.outlets.displayName_TextField->stringValue();
    model.sortedDisplayNames.push_back(displayName);
    // A name trimmed here stays in the menu until the next start, on purpose: a menu must not lose
    // items that the user did not remove.
    m_deps.store.trimProfiles(model.availableServersDict);
    m_deps.store.addProfile(model.availableServersDict, displayName, m_deps.connection.serverUrl);
    m_deps.menu.rebuildServerMenu(model.sortedDisplayNames);
    m_deps.outlets.selectServer_Button->selectItem(displayName);
}

// Add mode turns the check box off without storing that. What is stored must agree with the
// current-profile entry, also after a restart.
void ServerUpdate::storeCredentialMode()
{
    auto& actionsDefaults = m_deps.store.domains().actionsDefaults();
    const bool usesUsername = m_deps.connection.useApiClient != 1;
    if ((actionsDefaults.integer("useUsername") != 0) != usesUsername)
        actionsDefaults.set("useUsername", usesUsername ? 1 : 0);
}

std::string ServerUpdate::failToConnect()
{
    const auto host = hostFromServerURL(m_deps.connection.serverUrl);
    m_deps.outlets.zarnProServer_textfield->setEditable(true);
    m_deps.log.writeEntry(
        "[LoginVC.updateServerInfo] failed to connect to " + host + ".  Verify url and port.");
    return m_deps.alerts.display("", "Failed to connect to " + host, "Quit");
}

std::string ServerUpdate::failToAuthenticate(std::int64_t statusCode)
{
    const auto status = std::to_string(statusCode);
    m_deps.outlets.zarnProServer_textfield->setEditable(true);
    // Without its opening bracket on purpose: scripts that read the log look for this text.
    m_deps.log.writeEntry("LoginVC.updateServerInfo] Failed to authenticate to "
        + hostFromServerURL(m_deps.connection.serverUrl) + ".  Response error: " + status + ".");
    return m_deps.alerts.display("", "Failed to authenticate. HTTP status code: " + status, "Quit");
}

} // namespace zarn
