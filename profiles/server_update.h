// SPDX-License-Identifier: MIT
#pragma once

#include "profiles/credentials.h"
#include "profiles/login_model.h"
#include "profiles/login_outlets.h"
#include "profiles/server_menu.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zarn {

class AlertDisplay;
class Application;
class TokenDelegate;
class WriteToLog;
struct ConnectionState;

/// The text of the current-profile entry. The values go in as they are: a quote in a password gives
/// a text that is not JSON, and its readers know.
std::string currentProfileJson(const ConnectionState& connection);

/// How a server replied to credentials; see ValidationCompletion.
struct UpdateOutcome {
    std::int64_t statusCode = 0;
    std::string result;
};

/// The flow behind the "Add"/"Set" button: proves the credentials, then saves them. Main thread
/// only.
class ServerUpdate {
public:
    struct Deps {
        LoginOutlets& outlets;
        LoginModel& model;
        ProfileStore& store;
        ServerMenu& menu;
        ConnectionState& connection;
        CredentialsFactory credentials;
        std::function<std::shared_ptr<TokenDelegate>()> makeTokenDelegate;
        WriteToLog& log;
        AlertDisplay& alerts;
        Application& application;
    };
    explicit ServerUpdate(Deps deps)
        : m_deps(std::move(deps))
    {
    }

    void updateServerInfo(const Button& sender);
    /// Of the last click; nothing until its flow has ended.
    const std::optional<UpdateOutcome>& outcome() const { return m_outcome; }

private:
    /// The title of the button pressed in the result alert; shared by a click and its completion.
    using ResultBox = std::shared_ptr<std::string>;

    bool offerHostAsDisplayName();
    void handleTokenResult(
        std::int64_t statusCode, const std::string& result, const ResultBox& resultBox);
    void saveSecrets() const;
    void saveProfile();
    void storeCredentialMode();
    std::string succeed();
    std::string failToConnect();
    std::string failToAuthenticate(std::int64_t statusCode);

    Deps m_deps;
    std::optional<UpdateOutcome> m_outcome;
    // A completion that comes after the view is gone does nothing.
    std::shared_ptr<int> m_life = std::make_shared<int>();
};

} // namespace zarn
