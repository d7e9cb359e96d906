// SPDX-License-Identifier: MIT
#include "tests/app/app_fixture.h"
#include "tests/app/expected_login.h"

#include <random>

namespace zarn {

namespace {

/// Uses the program at random, as a person could, and compares it with the reference model after
/// every step.
class RandomUseTest : public AppTest {
protected:
    int upTo(int last) { return std::uniform_int_distribution<int>(0, last)(m_random); }
    double now() const { return platform.clock.time.secondsSince1970; }
    memory::MemoryOutlets& outlets() { return mainWindow().outlets; }
    void click(std::string_view name) { ASSERT_TRUE(mainWindow().click(name)) << name; }
    void type(std::string_view name, std::string_view text)
    {
        ASSERT_TRUE(mainWindow().type(name, text)) << name;
    }

    void restart()
    {
        end();
        start();
        model.start(now());
    }

    void chooseName(const std::string& name, bool withOption)
    {
        platform.application.modifierFlags = withOption ? modifierFlagOption : 0;
        ASSERT_TRUE(mainWindow().choose(name)) << name;
        platform.application.modifierFlags = 0;
    }

    void useMenu()
    {
        if (model.isAdding || model.isDisabled)
            return;
        if (model.names.empty() || upTo(1) == 0) {
            chooseName("Add Server...", upTo(1) == 0);
            model.enterAddMode();
            return;
        }
        const auto name = model.names.at(
            static_cast<std::size_t>(upTo(static_cast<int>(model.names.size()) - 1)));
        if (upTo(19) == 0) {
            const bool confirmed = upTo(2) > 0;
            platform.alertRunner.answers
                = {confirmed ? alertFirstButtonReturn : alertSecondButtonReturn};
            chooseName(name, true);
            model.remove(name, confirmed);
        } else if (model.profiles.contains(name)) { // Else it was trimmed away: fatal.
            chooseName(name, false);
            model.choose(name);
        }
    }

    void cancelAdding()
    {
        if (!model.isAdding || !model.canCancel())
            return;
        click("quit_Button");
        model.cancel();
    }

    void switchMode()
    {
        click("useUsername_button");
        model.switchMode();
    }

    void fillIn()
    {
        if (model.isServerEditable && (model.isAdding || upTo(1) == 0)) {
            model.serverField = "https://host" + std::to_string(upTo(20)) + ".example"
                + std::vector<std::string>{
                    "", ":8443", "/", ":8443//"}[static_cast<std::size_t>(upTo(3))];
            outlets().fieldNamed("zarnProServer_textfield").type(model.serverField);
        }
        if (model.isAdding || upTo(1) == 0) {
            model.usernameField = "user" + std::to_string(upTo(2));
            model.passwordField = "secret" + std::to_string(upTo(5));
            outlets().fieldNamed("zarnProUsername_textfield").type(model.usernameField);
            outlets().fieldNamed("zarnProPassword_textfield").type(model.passwordField);
        }
    }

    void validate()
    {
        if (model.isDisabled || (!model.isAdding && model.selected.empty()))
            return;
        fillIn();
        auto displayName = outlets().fieldNamed("displayName_TextField").stringValue();
        if (model.isAdding) {
            displayName = "server " + std::to_string(upTo(70));
            type("displayName_TextField", displayName);
        }
        const int outcome = upTo(9);
        if (outcome == 0)
            platform.urlSessions.replyNothing();
        else if (outcome == 1)
            platform.urlSessions.reply(401, "");
        else if (outcome == 2)
            platform.urlSessions.reply(200, "garbage");
        else
            answerSuccess();
        click("updateServerInfo_Button");
        platform.urlSessions.deliverAll();
        model.isServerEditable = outcome < 2;
        if (outcome > 2)
            model.succeed(displayName, now());
    }

    void answerSuccess()
    {
        platform.urlSessions.reply(
            200, model.usesUsername ? R"({"token":"t"})" : R"({"access_token":"t"})");
        if (app().connection().serverVersion.empty())
            platform.urlSessions.reply(200, R"({"version":"10.40.0"})");
    }

    void step()
    {
        platform.clock.time.secondsSince1970 += upTo(24) - 4; // The clock is set back at times.
        const int action = upTo(99);
        if (action < 2)
            restart();
        else if (action < 45)
            useMenu();
        else if (action < 50)
            cancelAdding();
        else if (action < 58)
            switchMode();
        else
            validate();
        ASSERT_TRUE(app().finishKeychainWrites());
    }

    void expectStoredAsInModel()
    {
        Value::Dictionary profiles;
        for (const auto& [name, profile] : model.stored)
            profiles[name]
                = Value::Dictionary{{"server", profile.server}, {"date", Date{profile.date}}};
        ASSERT_EQ(
            platform.settings.suite("group.R3V8N1P6WB.zarnie.SharedZPMA")->values.at("serversDict"),
            Value(profiles));
        auto& actions = *platform.settings.suite("group.Q7X2M9K4TA.zarnactions");
        ASSERT_EQ(actions.string("currentServer"), model.currentServer);
        ASSERT_EQ(actions.string("username").value_or(""), model.username);
        ASSERT_EQ(actions.integer("useUsername"), model.usesUsernameStored ? 1 : 0);
        std::vector<ExpectedLogin::Secret> items;
        for (const auto& item : platform.keychain.items)
            items.push_back({item.service, item.account, {item.secret.begin(), item.secret.end()}});
        ASSERT_EQ(items, model.keychain);
    }

    void expectShownAsInModel()
    {
        auto menuItems = model.names;
        menuItems.erase(std::unique(menuItems.begin(), menuItems.end()), menuItems.end());
        menuItems.insert(menuItems.end(), {"-", "Add Server..."});
        ASSERT_EQ(outlets().popUp.shownItems(), menuItems);
        ASSERT_EQ(outlets().popUp.isHidden(), model.isAdding);
        if (!model.isAdding && !model.isDisabled) {
            ASSERT_EQ(outlets().popUp.titleOfSelectedItem(), model.selected);
        }
        ASSERT_EQ(outlets().buttonNamed("updateServerInfo_Button").title(),
            model.isAdding ? "Add" : "Set");
        ASSERT_EQ(outlets().buttonNamed("quit_Button").title(), model.isAdding ? "Cancel" : "Quit");
        ASSERT_EQ(
            outlets().fieldNamed("zarnProServer_textfield").isEditable(), model.isServerEditable);
        ASSERT_EQ(outlets().labelNamed("username_label").stringValue(),
            model.usesUsername ? "Username:" : "Client ID:");
        ASSERT_EQ(app().connection().useApiClient, model.usesUsername ? 0 : 1);
        const auto text
            = [this](std::string_view name) { return outlets().fieldNamed(name).stringValue(); };
        ASSERT_EQ(text("zarnProServer_textfield"), model.serverField);
        ASSERT_EQ(text("zarnProUsername_textfield"), model.usernameField);
        ASSERT_EQ(text("zarnProPassword_textfield"), model.passwordField);
    }

    void use(unsigned seed, int steps)
    {
        m_random.seed(seed);
        agreeToTerms();
        start();
        model.start(now());
        for (int i = 0; i < steps; ++i) {
            ASSERT_NO_FATAL_FAILURE(step()) << "seed " << seed << ", step " << i;
            ASSERT_NO_FATAL_FAILURE(expectStoredAsInModel()) << "seed " << seed << ", step " << i;
            ASSERT_NO_FATAL_FAILURE(expectShownAsInModel()) << "seed " << seed << ", step " << i;
            most = std::max(most, model.stored.size());
        }
    }

    ExpectedLogin model;
    std::size_t most = 0;

private:
    std::mt19937 m_random;
};

class RandomUse : public RandomUseTest, public testing::WithParamInterface<unsigned> { };

TEST_P(RandomUse, TheProgramHoldsAndStoresWhatTheModelSays)
{
    use(GetParam(), 1500);
    if (!HasFatalFailure()) {
        EXPECT_GE(most, 40U) << "the limit was never reached";
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomUse, testing::Range(1U, 11U));

} // namespace

} // namespace zarn
