// SPDX-License-Identifier: MIT
#pragma once

#include "tests/profiles/login_fixture.h"

#include <algorithm>

namespace zarn {

/// Whole flows through the view: servers are added and answer.
class FlowTest : public LoginTest {
protected:
    void storeNumberedProfiles(int count)
    {
        for (int i = 0; i < count; ++i)
            storeProfile("server " + std::to_string(1000 + i), "https://s", 100 + i);
    }
    void press() { click("updateServerInfo_Button"); }
    void fillInNewServer(const std::string& name, const std::string& url)
    {
        if (!window.outlets.popUp.isHidden())
            choose("Add Server...");
        type("displayName_TextField", name);
        typeServer(url);
        typeCredentials("id", "secret");
    }
    void addServer(const std::string& name, const std::string& url)
    {
        fillInNewServer(name, url);
        press();
        answerSuccess();
    }
    void answerSuccess()
    {
        platform.urlSessions.reply(200,
            connection.useApiClient == 1 ? R"({"access_token":"t0k3n"})" : R"({"token":"t0k3n"})");
        if (connection.serverVersion.empty())
            platform.urlSessions.reply(200, R"({"version":"10.40.0"})");
        platform.urlSessions.deliverAll();
    }
    void answer(int status)
    {
        platform.urlSessions.reply(status, "");
        platform.urlSessions.deliverAll();
    }
    void answerNothing()
    {
        platform.urlSessions.replyNothing();
        platform.urlSessions.deliverAll();
    }
    bool menuHas(std::string_view title)
    {
        const auto titles = window.outlets.popUp.itemTitles();
        return std::find(titles.begin(), titles.end(), title) != titles.end();
    }
    std::vector<std::string> settingsWrites() const
    {
        std::vector<std::string> writes;
        for (const auto& event : platform.events) {
            if (event.starts_with("set ") || event.starts_with("remove group"))
                writes.push_back(event);
        }
        return writes;
    }
    bool credentialFieldsAreShown()
    {
        const auto& outlets = window.outlets;
        int shown = 0;
        for (const auto* name :
            {"zarnProServer_textfield", "zarnProUsername_textfield", "zarnProPassword_textfield"})
            shown += outlets.textFields.at(name)->isHidden() ? 0 : 1;
        for (const auto* name : {"serverURL_Label", "username_label", "password_label"})
            shown += outlets.labels.at(name)->isHidden() ? 0 : 1;
        EXPECT_TRUE(shown == 0 || shown == 6) << shown;
        return shown == 6;
    }
    void expectAddMode()
    {
        EXPECT_EQ(labelText("displayName_Label"), "Display Name:");
        EXPECT_FALSE(field("displayName_TextField").isHidden());
        EXPECT_EQ(nameText(), "");
        EXPECT_GE(field("displayName_TextField").timesFirstResponder, 1);
        EXPECT_TRUE(window.outlets.popUp.isHidden());
        EXPECT_EQ(button("quit_Button").title(), "Cancel");
        EXPECT_EQ(button("updateServerInfo_Button").title(), "Add");
        EXPECT_TRUE(field("zarnProServer_textfield").isEditable());
        EXPECT_TRUE(credentialFieldsAreShown());
    }
    void expectProfileMode(const std::string& displayName)
    {
        EXPECT_EQ(labelText("displayName_Label"), "Server:");
        EXPECT_TRUE(field("displayName_TextField").isHidden());
        EXPECT_EQ(nameText(), displayName);
        EXPECT_FALSE(window.outlets.popUp.isHidden());
        EXPECT_EQ(selectedTitle(), displayName);
        EXPECT_EQ(button("quit_Button").title(), "Quit");
        EXPECT_EQ(button("updateServerInfo_Button").title(), "Set");
    }
};

} // namespace zarn
