// SPDX-License-Identifier: MIT
#include "profiles/server_menu.h"

#include "api/alert_display.h"
#include "base/fatal.h"
#include "platform/application.h"
#include "platform/settings.h"
#include "platform/text_services.h"
#include "profiles/settings_domains.h"

#include <algorithm>

namespace zarn {

void ServerMenu::rebuildServerMenu(std::vector<std::string> names)
{
    m_deps.texts.sortLocalized(names);
    m_deps.model.sortedDisplayNames = std::move(names);
    auto& button = m_deps.outlets.selectServer_Button.get();
    button.removeAllItems();
    button.addItems(m_deps.model.sortedDisplayNames);
    auto& menu = m_deps.outlets.selectServer_Menu.get();
    menu.insertSeparator(menu.numberOfItems());
    button.addItem(addServerTitle);
}

void ServerMenu::serverMenuSelectionChanged()
{
    const auto title = m_deps.outlets.selectedServer_ButtonCell->title();
    if (title == addServerTitle)
        enterAddMode();
    else if (m_deps.application.currentModifierFlags() & modifierFlagOption)
        askToRemove();
    else
        showProfile(title);
}

void ServerMenu::enterAddMode()
{
    auto& outlets = m_deps.outlets;
    outlets.displayName_TextField->makeFirstResponder();
    outlets.displayName_Label->setStringValue("Display Name:");
    outlets.displayName_TextField->setStringValue("");
    outlets.selectServer_Button->setHidden(true);
    outlets.displayName_TextField->setHidden(false);
    outlets.serverURL_Label->setHidden(false);
    outlets.zarnProServer_textfield->setHidden(false);
    outlets.zarnProServer_textfield->setEditable(true);
    outlets.emptyCredentialFields();
    outlets.useUsername_button->setState(0);
    m_deps.fields.adoptCredentialMode();
    outlets.saveCreds_button->setState(0);
    // Into this domain on purpose, although start-up reads the standard one: actions look here.
    m_deps.store.domains().actionsDefaults().set("saveCreds", 1);
    outlets.hideCreds_button->setHidden(true);
    outlets.quit_Button->setTitle("Cancel");
    outlets.updateServerInfo_Button->setTitle("Add");
    m_deps.fields.applyCredentialFieldsMode(2);
}

void ServerMenu::askToRemove()
{
    auto& outlets = m_deps.outlets;
    const auto title = outlets.selectServer_Button->titleOfSelectedItem();
    const auto answer = m_deps.alerts.display(
        "", "Are you sure you want to remove " + title + " from the list?", "Cancel");
    if (answer == "Cancel")
        return;
    removeProfile(title);
    const auto& names = m_deps.model.sortedDisplayNames;
    if (std::find(names.begin(), names.end(), m_deps.model.lastServerDN) == names.end()) {
        outlets.selectServer_Button->selectNone();
        outlets.emptyCredentialFields();
        outlets.selectServer_Button->selectNone();
    } else {
        outlets.selectServer_Button->selectItem(m_deps.model.lastServerDN);
    }
}

// Which profile is current, the user name and the keychain entries stay on purpose: actions that
// are set up with this server go on working.
void ServerMenu::removeProfile(const std::string& displayName)
{
    auto& model = m_deps.model;
    if (model.availableServersDict.erase(displayName) > 0) {
        m_deps.outlets.selectServer_Button->removeItem(displayName);
        std::erase(model.sortedDisplayNames, displayName);
    }
    m_deps.store.writeProfiles(model.availableServersDict);
}

void ServerMenu::showProfile(const std::string& displayName)
{
    auto& outlets = m_deps.outlets;
    outlets.displayName_Label->setStringValue("Server:");
    outlets.selectServer_Button->setHidden(false);
    outlets.displayName_TextField->setHidden(true);
    m_deps.store.selectProfile(outlets.selectServer_Button->titleOfSelectedItem());
    outlets.hideCreds_button->setHidden(false);
    outlets.displayName_TextField->setStringValue(displayName);
    if (outlets.updateServerInfo_Button->title() == "Add")
        m_deps.fields.restoreCredentialMode();
    const auto& profiles = m_deps.model.availableServersDict;
    const auto it = profiles.find(displayName);
    const auto server
        = it == profiles.end() ? std::nullopt : stringMember(*it->second.dictionary(), "server");
    // An add trims the stored profiles, but no titles of the menu. Choosing a title that was
    // trimmed away stops the process on purpose: there is no profile to show, and showing another
    // one's credentials under this title would be worse. The next start lists what is stored.
    if (!server)
        fatalError("a menu title without a stored profile");
    outlets.zarnProServer_textfield->setStringValue(*server);
    m_deps.fields.fillCredentialsFromKeychain();
    outlets.quit_Button->setTitle("Quit");
    outlets.updateServerInfo_Button->setTitle("Set");
}

} // namespace zarn
