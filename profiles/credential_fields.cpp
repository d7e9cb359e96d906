// SPDX-License-Identifier: MIT
#include "profiles/credential_fields.h"

#include "api/connection_state.h"
#include "platform/console.h"
#include "platform/settings.h"
#include "profiles/server_url.h"
#include "profiles/settings_domains.h"

#include <algorithm>
#include <limits>

namespace zarn {

namespace {
constexpr int contentWidth = 518;
constexpr int collapsedHeight = 85;
constexpr int expandedHeight = 208;
} // namespace

int buttonState(std::int64_t stored)
{
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(stored, -most, most));
}

std::string CredentialFields::host() const
{
    return hostFromServerURL(m_deps.outlets.zarnProServer_textfield->stringValue());
}

AccountMap CredentialFields::retrieve(const std::string& host) const
{
    return m_deps.credentials()->retrieve(host);
}

void CredentialFields::setDisclosure(int value) const
{
    m_deps.outlets.hideCreds_button->setImage(
        value != 0 ? ImageName::TouchBarGoDownTemplate : ImageName::RightFacingTriangleTemplate);
}

void CredentialFields::applyCredentialFieldsMode(int value)
{
    auto& outlets = m_deps.outlets;
    if (value >= 0 && value <= 2) {
        const bool hidden = value == 0;
        m_deps.setPreferredContentSize(contentWidth, hidden ? collapsedHeight : expandedHeight);
        outlets.hideCreds_button->setToolTip(
            hidden ? "show username/password fields" : "hide username/password fields");
        for (auto* control : outlets.credentialControls())
            control->setHidden(hidden);
    }
    outlets.hideCreds_button->setState(value);
    setDisclosure(value);
}

void CredentialFields::applyCredentialModeLabels()
{
    auto& outlets = m_deps.outlets;
    m_deps.connection.useUsernameState = outlets.useUsername_button->state();
    const bool usesUsername = m_deps.connection.useUsernameState == 1;
    outlets.username_label->setStringValue(usesUsername ? "Username:" : "Client ID:");
    outlets.password_label->setStringValue(usesUsername ? "Password:" : "Client Secret:");
}

void CredentialFields::adoptCredentialMode()
{
    applyCredentialModeLabels();
    m_deps.connection.useApiClient = m_deps.connection.useUsernameState == 1 ? 0 : 1;
}

std::int64_t CredentialFields::restoreCredentialMode()
{
    const auto stored = m_deps.domains.actionsDefaults().integer("useUsername");
    m_deps.connection.useUsernameState = buttonState(stored);
    m_deps.connection.useApiClient = stored == 0 ? 1 : 0;
    m_deps.outlets.useUsername_button->setState(buttonState(stored));
    applyCredentialModeLabels();
    return stored;
}

void CredentialFields::fillCredentialsFromKeychain()
{
    auto& outlets = m_deps.outlets;
    const auto accounts = retrieve(host());
    if (accounts.empty()) {
        outlets.zarnProPassword_textfield->setStringValue("");
        applyCredentialFieldsMode(1);
        return;
    }
    for (const auto& [account, secret] : accounts) {
        if (account != outlets.zarnProUsername_textfield->stringValue() && accounts.size() != 1)
            continue;
        outlets.zarnProUsername_textfield->setStringValue(account);
        outlets.zarnProPassword_textfield->setStringValue(secret);
    }
}

void CredentialFields::hideCredsToggled()
{
    const int state = m_deps.outlets.hideCreds_button->state();
    setDisclosure(state);
    m_deps.domains.actionsDefaults().set("hideCreds", state);
    applyCredentialFieldsMode(state);
}

void CredentialFields::useUsernameToggled()
{
    applyCredentialModeLabels();
    const bool usesUsername = m_deps.connection.useUsernameState == 1;
    m_deps.domains.actionsDefaults().set("useUsername", usesUsername ? 1 : 0);
    m_deps.connection.useApiClient = usesUsername ? 0 : 1;
    refillCredentialsForMode();
}

void CredentialFields::saveCredentialsToggled()
{
    const bool isOn = m_deps.outlets.saveCreds_button->state() == 1;
    m_deps.domains.standardDefaults().set("saveCreds", isOn ? 1 : 0);
}

void CredentialFields::refillCredentialsForMode()
{
    auto& outlets = m_deps.outlets;
    auto& accounts = m_deps.model.accountDict;
    accounts = retrieve(host());
    if (accounts.size() == 1) {
        outlets.zarnProUsername_textfield->setStringValue(accounts.begin()->first);
        outlets.zarnProPassword_textfield->setStringValue(accounts.begin()->second);
        return;
    }
    outlets.zarnProPassword_textfield->setStringValue("");
    if (const auto it = accounts.find(outlets.zarnProUsername_textfield->stringValue());
        it != accounts.end())
        outlets.zarnProPassword_textfield->setStringValue(it->second);
}

void CredentialFields::credentialFieldDidEndEditing(const TextField* field)
{
    if (!field)
        return;
    if (field->identifier() == "server")
        serverFieldDidEndEditing();
    else if (field->identifier() == "username")
        usernameFieldDidEndEditing();
}

// Leaving the server field never empties the password, leaving the username field always does: a
// typed password belongs to the name beside it, and the URL may still be corrected.
void CredentialFields::serverFieldDidEndEditing()
{
    auto& outlets = m_deps.outlets;
    auto& accounts = m_deps.model.accountDict;
    accounts = retrieve(host());
    const auto it = accounts.find(outlets.zarnProUsername_textfield->stringValue());
    if (it == accounts.end())
        return;
    outlets.zarnProUsername_textfield->setStringValue(it->first);
    outlets.zarnProPassword_textfield->setStringValue(it->second);
}

void CredentialFields::usernameFieldDidEndEditing()
{
    auto& outlets = m_deps.outlets;
    m_deps.console.writeLine("[controlTextDidEndEditing] server: " + host());
    const auto accounts = retrieve(host());
    outlets.zarnProPassword_textfield->setStringValue("");
    if (const auto it = accounts.find(outlets.zarnProUsername_textfield->stringValue());
        it != accounts.end())
        outlets.zarnProPassword_textfield->setStringValue(it->second);
}

} // namespace zarn
