// SPDX-License-Identifier: MIT
#pragma once

#include "profiles/credentials.h"
#include "profiles/login_model.h"
#include "profiles/login_outlets.h"

#include <cstdint>
#include <functional>

namespace zarn {

class Console;
class SettingsDomain;
struct ConnectionState;

/// The state of a check box for a stored number: one outside of what an int holds stays as far out
/// as it can.
int buttonState(std::int64_t stored);

/// The credential part of the configuration view: showing and hiding it, its labels, and filling it
/// from the keychain. Main thread only.
class CredentialFields {
public:
    struct Deps {
        LoginOutlets& outlets;
        LoginModel& model;
        ConnectionState& connection;
        SettingsDomains& domains;
        CredentialsFactory credentials;
        Console& console;
        std::function<void(int width, int height)> setPreferredContentSize;
    };
    explicit CredentialFields(Deps deps)
        : m_deps(std::move(deps))
    {
    }

    /// 0 hides the fields; 1 (chosen) and 2 (whatever was chosen) show them.
    void applyCredentialFieldsMode(int value);
    /// The check box decides between user name and API client wording.
    void applyCredentialModeLabels();
    void fillCredentialsFromKeychain();

    void hideCredsToggled();
    void useUsernameToggled();
    void saveCredentialsToggled();
    void credentialFieldDidEndEditing(const TextField* field);
    /// The credential mode as the check box has it, without storing it.
    void adoptCredentialMode();
    /// The credential mode as it is stored; returns the stored number.
    std::int64_t restoreCredentialMode();

private:
    void refillCredentialsForMode();
    void serverFieldDidEndEditing();
    void usernameFieldDidEndEditing();
    std::string host() const;
    AccountMap retrieve(const std::string& host) const;
    void setDisclosure(int value) const;

    Deps m_deps;
};

} // namespace zarn
