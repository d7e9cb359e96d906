// SPDX-License-Identifier: MIT
#pragma once

#include "profiles/credential_fields.h"
#include "profiles/login_model.h"
#include "profiles/login_outlets.h"

#include <string>
#include <vector>

namespace zarn {

class AlertDisplay;
class Application;
class TextServices;

/// The server pop-up menu and what choosing its items does. Main thread only.
class ServerMenu {
public:
    struct Deps {
        LoginOutlets& outlets;
        LoginModel& model;
        ProfileStore& store;
        CredentialFields& fields;
        const TextServices& texts;
        AlertDisplay& alerts;
        Application& application;
    };
    explicit ServerMenu(const Deps& deps)
        : m_deps(deps)
    {
    }

    /// The names in localized order, a separator, "Add Server...".
    void rebuildServerMenu(std::vector<std::string> names);
    /// An item was chosen: add mode, removal (with Option held), or profile mode.
    void serverMenuSelectionChanged();

    static constexpr const char* addServerTitle = "Add Server...";

private:
    void enterAddMode();
    void askToRemove();
    void removeProfile(const std::string& displayName);
    void showProfile(const std::string& displayName);

    Deps m_deps;
};

} // namespace zarn
