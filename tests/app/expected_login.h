// SPDX-License-Identifier: MIT
#pragma once

#include "base/base64.h"
#include "platform/memory/memory_text_services.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace zarn {

/// What the configuration view should hold and have stored, written a second time in the plainest
/// way: no controls, no settings, no queue. Random tests compare it with the real thing.
struct ExpectedLogin {
    struct Profile {
        std::string server;
        double date = 0;
        bool operator==(const Profile&) const = default;
    };
    struct Secret {
        std::string service;
        std::string account;
        std::string secret;
        bool operator==(const Secret&) const = default;
    };

    // Stored.
    std::map<std::string, Profile> stored;
    std::optional<std::string> currentServer;
    std::string username;
    bool usesUsernameStored = false;
    std::vector<Secret> keychain;

    // In the view.
    std::map<std::string, Profile> profiles;
    std::vector<std::string> names;
    std::string lastServer;
    std::string lastServerDN;
    std::string selected;
    std::string serverField;
    std::string usernameField;
    std::string passwordField;
    bool usesUsername = false;
    bool isAdding = false;
    bool isDisabled = false;
    bool isServerEditable = false;

    static std::string host(const std::string& url)
    {
        if (url.empty())
            return "";
        const auto from = url.find("//") + 2;
        return url.substr(from, url.find_first_of(":/", from) - from);
    }
    std::string service(const std::string& url) const
    {
        return (usesUsername ? "ZPMA-" : "zortcuts-apiClient-") + host(url);
    }

    void start(double now)
    {
        profiles = stored;
        isDisabled = isAdding = isServerEditable = false;
        lastServerDN = selected = serverField = usernameField = passwordField = "";
        usesUsername = usesUsernameStored;
        lastServer = "";
        if (currentServer && profiles.contains(*currentServer)) {
            lastServer = *currentServer;
        } else {
            currentServer.reset();
            double newest = 0;
            for (const auto& [name, profile] : profiles) {
                if (lastServer.empty() || profile.date > newest)
                    std::tie(lastServer, newest) = std::tie(profile.server, profile.date);
            }
        }
        trim(now);
        sortNames();
        if (profiles.empty()) {
            enterAddMode();
        } else if (const auto it = profiles.find(lastServer); it != profiles.end()) {
            lastServerDN = selected = it->first;
            serverField = it->second.server;
            usernameField = username;
            fill();
        }
    }

    void enterAddMode()
    {
        isAdding = isServerEditable = true;
        selected = "Add Server...";
        serverField = usernameField = passwordField = "";
        usesUsername = false;
    }

    void choose(const std::string& name)
    {
        // Only reached outside add mode: there the menu is hidden.
        selected = name;
        currentServer = name;
        serverField = profiles.at(name).server;
        fill();
    }

    void remove(const std::string& name, bool confirmed)
    {
        selected = name;
        if (!confirmed)
            return;
        if (profiles.erase(name) > 0)
            std::erase(names, name);
        stored = profiles;
        if (std::find(names.begin(), names.end(), lastServerDN) == names.end()) {
            selected = serverField = usernameField = passwordField = "";
        } else {
            selected = lastServerDN;
        }
    }

    bool canCancel() const { return lastServer.empty() || !profiles.empty(); }
    void cancel()
    {
        isAdding = isServerEditable = false;
        usesUsername = usesUsernameStored;
        if (lastServer.empty()) {
            isDisabled = true;
            return;
        }
        auto it = std::find_if(profiles.begin(), profiles.end(),
            [this](const auto& entry) { return entry.second.server == lastServer; });
        if (it == profiles.end())
            it = std::prev(profiles.end());
        selected = it->first;
        serverField = it->second.server;
        fill();
    }

    void switchMode()
    {
        usesUsername = usesUsernameStored = !usesUsername;
        const auto* found = firstOf(service(serverField));
        passwordField = found ? found->secret : "";
        if (found)
            usernameField = found->account;
    }

    void succeed(const std::string& displayName, double now)
    {
        isServerEditable = false;
        if (!serverField.empty())
            save(service(serverField), usernameField, passwordField);
        auto trimmed = serverField;
        while (trimmed.ends_with('/'))
            trimmed.pop_back();
        save("ZPMA-zortcuts", "zortcuts",
            base64Encoded(R"({"server":")" + trimmed + R"(", "username":")" + usernameField
                + R"(", "password":")" + passwordField + R"(", "useApiClient":")"
                + (usesUsername ? "0" : "1") + R"("})"));
        if (isAdding) {
            names.push_back(displayName);
            trim(now);
            profiles[displayName] = {serverField, now};
            stored = profiles;
            sort(names);
            selected = displayName;
            isAdding = false;
            usesUsernameStored = usesUsername;
        }
        currentServer = displayName;
        username = usernameField;
    }

    /// Pass by pass, as the rule is written down.
    void trim(double now)
    {
        while (profiles.size() > 39) {
            auto oldest = profiles.end();
            for (auto it = profiles.begin(); it != profiles.end(); ++it) {
                if (it->second.date < (oldest == profiles.end() ? now : oldest->second.date))
                    oldest = it;
            }
            if (oldest == profiles.end())
                return;
            profiles.erase(oldest);
        }
    }

private:
    void sortNames()
    {
        names.clear();
        for (const auto& [name, profile] : profiles)
            names.push_back(name);
        sort(names);
    }
    static void sort(std::vector<std::string>& texts)
    {
        memory::MemoryTextServices().sortLocalized(texts);
    }
    const Secret* firstOf(const std::string& wanted) const
    {
        const auto it = std::find_if(keychain.begin(), keychain.end(),
            [&](const Secret& item) { return item.service == wanted; });
        return it == keychain.end() ? nullptr : &*it;
    }
    void fill()
    {
        const auto* found = firstOf(service(serverField));
        passwordField = found ? found->secret : "";
        if (found)
            usernameField = found->account;
    }
    void save(const std::string& wanted, const std::string& account, const std::string& secret)
    {
        const auto same = std::find_if(keychain.begin(), keychain.end(),
            [&](const Secret& item) { return item.service == wanted && item.account == account; });
        if (same == keychain.end()) {
            keychain.push_back({wanted, account, secret});
        } else if (same->secret != secret) {
            // The update names no account.
            std::find_if(keychain.begin(), keychain.end(),
                [&](const Secret& item) { return item.service == wanted; })
                ->secret
                = secret;
        }
    }
};

} // namespace zarn
