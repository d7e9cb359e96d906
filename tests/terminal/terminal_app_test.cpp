// SPDX-License-Identifier: MIT
#include "base/json.h"
#include "tests/terminal/terminal_fixture.h"

#include <chrono>

namespace zarn {
namespace {

using TerminalAppTest = TerminalTest;

TEST_F(TerminalAppTest, TheTermsArePrintedWithTheAddressesOfTheirLinks)
{
    platform.settings.standard().values.clear();
    EXPECT_EQ(run({"terms"}), 0);
    EXPECT_NE(terminal.output.find("zarn.example/feedback <https://zarn.example/feedback> and"),
        std::string::npos);
    EXPECT_NE(
        terminal.output.find("Agreement <https://zarn.example/agreement>"), std::string::npos);
    EXPECT_TRUE(terminal.output.ends_with("\nThe terms of use are not accepted.\n"));
    EXPECT_TRUE(platform.settings.standard().values.empty());
}

TEST_F(TerminalAppTest, AcceptingTheTermsStoresWhatTheWindowStores)
{
    platform.settings.standard().values.clear();
    EXPECT_EQ(run({"list"}), 0);
    EXPECT_EQ(run({"token"}), 6);
    EXPECT_EQ(run({"terms", "--accept"}), 0);
    EXPECT_EQ(terminal.output, "The terms of use are accepted.\n");
    EXPECT_EQ(
        platform.settings.standard().values, (Value::Dictionary{{"agreedToTermsOfUse", true}}));
    EXPECT_EQ(run({"token"}), 4);
    EXPECT_EQ(run({"terms", "--json"}), 0);
    EXPECT_EQ(parseJson(terminal.output).value().dictionary()->at("accepted"), Value(true));
}

TEST_F(TerminalAppTest, SettingsThatCannotBeOpenedAreAnError)
{
    platform.settings.broken.insert("group.Q7X2M9K4TA.zarnactions");
    EXPECT_EQ(run({"list"}), 8);
    EXPECT_EQ(error(), "zarn-profile: the folder of the settings cannot be used");
}

TEST_F(TerminalAppTest, TheWaitForTheKeyringIsShownOnATerminalOnly)
{
    TerminalApp app(services(), {});
    platform.keychain.setWaitingForUser(true);
    platform.keychain.setWaitingForUser(false);
    EXPECT_TRUE(terminal.errors.empty());
    terminal.errorIsTerminal = true;
    platform.keychain.setWaitingForUser(true);
    EXPECT_EQ(terminal.errors, std::vector<std::string>{"Waiting for the keyring to be unlocked"});
}

TEST_F(TerminalAppTest, NoQueueIsMadeForCommandsThatStoreNoSecret)
{
    EXPECT_EQ(run({"list"}), 0);
    EXPECT_EQ(platform.serialQueues.made.size(), 0U);
}

TEST_F(TerminalAppTest, AKeyringThatTakesTooLongIsAnErrorWithoutAnEnd)
{
    terminal.input.emplace_back("secret");
    accept();
    TerminalApp app(services(), {});
    Command command;
    command.verb = Command::Verb::Add;
    command.name = "Demo";
    command.url = "https://zarn.example";
    command.clientId = "id";
    const auto code = app.run(command);
    EXPECT_EQ(code, ExitCode::Done);
    platform.serialQueues.made.at(0)->busyFor = std::chrono::seconds(60);
    EXPECT_EQ(app.finish(code), std::nullopt);
    EXPECT_EQ(error(), "zarn-profile: the keyring did not take the secret in time");
}

} // namespace
} // namespace zarn
