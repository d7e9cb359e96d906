// SPDX-License-Identifier: MIT
#pragma once

#include "api/alert_display.h"
#include "api/bundle_texts.h"
#include "api/connection_state.h"
#include "api/token_delegate.h"
#include "log/write_to_log.h"
#include "platform/memory/memory_platform.h"
#include "profiles/credentials.h"
#include "profiles/login_vc.h"
#include "profiles/profile_store.h"
#include "profiles/settings_domains.h"
#include "profiles/status_line.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace zarn {

/// Answers alerts from a script; without one, with "OK". Records "alert <header>|<message>|<second
/// button>".
class ScriptedAlerts final : public AlertDisplay {
public:
    explicit ScriptedAlerts(std::vector<std::string>& events)
        : m_events(events)
    {
    }
    std::string display(std::string_view header, std::string_view message,
        std::string_view secondButtonTitle) override
    {
        shown.push_back(std::string(header) + "|" + std::string(message) + "|"
            + std::string(secondButtonTitle));
        m_events.push_back("alert " + shown.back());
        if (whileOpen)
            whileOpen();
        if (answers.empty())
            return "OK";
        auto answer = answers.front();
        answers.pop_front();
        return answer;
    }

    std::deque<std::string> answers;
    std::vector<std::string> shown;
    std::function<void()> whileOpen;

private:
    std::vector<std::string>& m_events;
};

inline Value::Dictionary profileRecord(const std::string& server, double date)
{
    return {{"server", server}, {"date", Date{date}}};
}

/// The configuration view in a window in memory, with everything it talks to.
class LoginTest : public testing::Test {
protected:
    /// Loads the view as the storyboard does; nothing is shown yet.
    void load() { load(log); }
    /// Loads it with another log for what its flows write.
    void load(WriteToLog& flowLog)
    {
        memory::layOut("LoginVC", window.outlets);
        auto made = std::make_unique<LoginVC>(LoginVC::Deps{.connection = connection,
            .domains = domains,
            .clock = platform.clock,
            .texts = platform.textServices,
            .logFile = logFile,
            .log = flowLog,
            .alerts = alerts,
            .application = platform.application,
            .console = platform.console,
            .notificationCenter = platform.notificationCenter,
            .credentials = [this] { return makeCredentials(); },
            .makeTokenDelegate = [this] { return makeTokenDelegate(); },
            .status = statusLine});
        login = made.get();
        window.controller = std::move(made);
        login->setView(&window.view);
        login->connectOutlets(window.outlets);
        login->viewDidLoad();
    }

    std::shared_ptr<Credentials> makeCredentials()
    {
        return std::make_shared<Credentials>(
            Credentials::Deps{platform.keychain, queue, logFile, connection});
    }
    std::shared_ptr<TokenDelegate> makeTokenDelegate()
    {
        return std::make_shared<TokenDelegate>(TokenDelegate::Deps{.connection = connection,
            .sessions = platform.urlSessions,
            .standardDefaults = domains.standardDefaults(),
            .texts = bundleTexts,
            .clock = platform.clock,
            .log = log,
            .alerts = alerts,
            .console = platform.console,
            .status = statusLine});
    }

    memory::MemorySettingsDomain& shared()
    {
        return *platform.settings.suite("group.R3V8N1P6WB.zarnie.SharedZPMA");
    }
    memory::MemorySettingsDomain& actions()
    {
        return *platform.settings.suite("group.Q7X2M9K4TA.zarnactions");
    }
    memory::MemorySettingsDomain& standard() { return platform.settings.standard(); }

    /// Stores a profile as an earlier run left it.
    void storeProfile(const std::string& displayName, const std::string& server, double date = 1000)
    {
        auto& stored = shared().values["serversDict"];
        if (!stored.dictionary())
            stored = Value::Dictionary{};
        (*stored.dictionary())[displayName] = profileRecord(server, date);
    }
    const ProfileMap& storedProfiles() { return *shared().values.at("serversDict").dictionary(); }
    /// Puts an item into the keychain as an earlier run left it.
    void storeSecret(
        const std::string& itemName, const std::string& account, const std::string& secret)
    {
        platform.keychain.items.push_back({"Q7X2M9K4TA.org.zarnie.zpshortcuts", itemName, account,
            Data(secret.begin(), secret.end())});
    }
    /// "service/account=secret" of every keychain item, oldest first.
    std::vector<std::string> keychainItems() const
    {
        std::vector<std::string> items;
        for (const auto& item : platform.keychain.items)
            items.push_back(item.service + "/" + item.account + "="
                + std::string(item.secret.begin(), item.secret.end()));
        return items;
    }

    std::string labelText(std::string_view name)
    {
        return window.outlets.labelNamed(name).stringValue();
    }
    std::string fieldText(std::string_view name)
    {
        return window.outlets.fieldNamed(name).stringValue();
    }
    std::string serverText() { return fieldText("zarnProServer_textfield"); }
    std::string usernameText() { return fieldText("zarnProUsername_textfield"); }
    std::string passwordText() { return fieldText("zarnProPassword_textfield"); }
    std::string nameText() { return fieldText("displayName_TextField"); }
    memory::MemoryButton& button(std::string_view name) { return window.outlets.buttonNamed(name); }
    memory::MemoryTextField& field(std::string_view name)
    {
        return window.outlets.fieldNamed(name);
    }
    std::string selectedTitle() { return window.outlets.popUp.titleOfSelectedItem(); }

    /// What a user does; the test fails when the control does not let him.
    void click(std::string_view name) { EXPECT_TRUE(window.click(name)) << name; }
    void choose(std::string_view title) { EXPECT_TRUE(window.choose(title)) << title; }
    void type(std::string_view name, std::string_view text)
    {
        EXPECT_TRUE(window.type(name, text)) << name;
    }
    void chooseWithOption(std::string_view title)
    {
        platform.application.modifierFlags = modifierFlagOption;
        choose(title);
        platform.application.modifierFlags = 0;
    }
    void typeServer(std::string_view url) { type("zarnProServer_textfield", url); }
    void typeCredentials(std::string_view username, std::string_view password)
    {
        type("zarnProUsername_textfield", username);
        type("zarnProPassword_textfield", password);
    }
    /// The log's messages without their time stamps ("Sat Mar 01 10:15:00 ").
    std::vector<std::string> logMessages() const
    {
        constexpr std::size_t stampLength = 20;
        std::vector<std::string> messages;
        for (const auto& [path, contents] : platform.fileManager.files) {
            std::istringstream lines(contents);
            for (std::string line; std::getline(lines, line);) {
                const bool isStamped
                    = line.size() >= stampLength && line[13] == ':' && line[16] == ':';
                if (isStamped)
                    messages.push_back(line.substr(stampLength));
                else if (!messages.empty())
                    messages.back() += "\n" + line;
            }
        }
        return messages;
    }
    /// Records, from now on, everything that code does to a control or to the view.
    void recordControls()
    {
        platform.events.clear();
        window.outlets.recordInto(&platform.events);
        // What the status line shows has tests of its own.
        window.outlets.labelNamed("status_Label").recordAs("status_Label", nullptr);
        window.view.recordsSizes = true;
    }
    std::vector<std::string>& events() { return platform.events; }

    memory::MemoryPlatform platform;
    ConnectionState connection;
    BundleTexts bundleTexts{platform.bundle};
    SettingsDomains domains{platform.settings};
    LogFile logFile{{platform.fileManager, platform.clock, platform.dateFormatter}};
    WriteToLog log{logFile};
    ScriptedAlerts alerts{platform.events};
    StatusLine statusLine{platform.console};
    memory::MemorySerialQueue queue{"com.zarn.zarn-shortcuts"};
    memory::MemoryWindowController window{"Zarn Actions", platform.events};
    LoginVC* login = nullptr;
};

} // namespace zarn
