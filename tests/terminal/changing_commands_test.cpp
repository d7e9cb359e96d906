// SPDX-License-Identifier: MIT
#include "tests/terminal/terminal_fixture.h"

namespace zarn {
namespace {

using Texts = std::vector<std::string>;

class ChangingCommandsTest : public TerminalTest {
protected:
    /// Two servers of API clients, the second current.
    void addTwo()
    {
        add("Berlin", "https://berlin.example:8443/", "b-id", "b-secret");
        add("Bonn", "https://bonn.example", "n-id", "n-secret");
    }
    int addDemo(const Texts& options = {})
    {
        Texts words{"add", "Demo", "--url", "https://zarn.example", "--client-id", "id"};
        words.insert(words.end(), options.begin(), options.end());
        return run(words);
    }
};

TEST_F(ChangingCommandsTest, AddingAnApiClientStoresWhatTheWindowStores)
{
    terminal.input.emplace_back("s3cret \" \\");
    accept();
    EXPECT_EQ(run({"add", "Demo", "--url", "https://zarn.example:8443/", "--client-id", "id"}), 0);
    EXPECT_EQ(terminal.output, "Demo was successfully set\n");
    EXPECT_EQ(terminal.errors, Texts{});
    const Value::Dictionary record{
        {"server", "https://zarn.example:8443/"}, {"date", platform.clock.now()}};
    EXPECT_EQ(shared().at("serversDict"), Value(Value::Dictionary{{"Demo", record}}));
    EXPECT_EQ(actions(),
        (Value::Dictionary{{"currentServer", "Demo"}, {"username", "id"}, {"saveCreds", 1}}));
    EXPECT_EQ(items(),
        (Texts{"zortcuts-apiClient-zarn.example/id=s3cret \" \\",
            "ZPMA-zortcuts/zortcuts="
                + base64Encoded(R"({"server":"https://zarn.example:8443", "username":"id", )"
                                R"("password":"s3cret " \", "useApiClient":"1"})")}));
    EXPECT_EQ(requestedUrls(),
        (Texts{"POST https://zarn.example:8443/api/oauth/token",
            "GET https://zarn.example:8443/api/v1/zarn-pro-version"}));
}

TEST_F(ChangingCommandsTest, AddingAUserStoresTheKindOfCredentials)
{
    terminal.input.emplace_back("pass");
    accept("token");
    EXPECT_EQ(run({"add", "Demo", "--url", "https://zarn.example", "--user", "admin"}), 0);
    EXPECT_EQ(actions().at("useUsername"), Value(1));
    EXPECT_EQ(actions().at("username"), Value("admin"));
    EXPECT_EQ(items().front(), "ZPMA-zarn.example/admin=pass");
    EXPECT_EQ(requestedUrls().front(), "POST https://zarn.example/api/v1/auth/token");
    terminal.input.emplace_back("secret");
    accept();
    EXPECT_EQ(run({"add", "Other", "--url", "https://other.example", "--client-id", "id"}), 0);
    EXPECT_EQ(actions().at("useUsername"), Value(0));
}

TEST_F(ChangingCommandsTest, WhatTheServerRefusesIsNotStored)
{
    addTwo();
    const auto before = stored();
    terminal.input.emplace_back("wrong");
    platform.urlSessions.reply(401, "");
    EXPECT_EQ(run({"add", "Demo", "--url", "https://zarn.example", "--user", "admin"}), 1);
    EXPECT_EQ(stored(), before);
    EXPECT_EQ(error(), "zarn-profile: zarn.example does not accept these credentials (HTTP 401)");
    EXPECT_EQ(terminal.output, "");
    terminal.input.emplace_back("wrong");
    platform.urlSessions.reply(401, "");
    EXPECT_EQ(run({"set", "Berlin"}), 1);
    EXPECT_EQ(stored(), before);
}

TEST_F(ChangingCommandsTest, EachWayToFailHasItsCode)
{
    struct Case {
        const char* url;
        std::function<void()> script;
        int code;
        const char* error;
    };
    auto& sessions = platform.urlSessions;
    const std::array<Case, 5> cases{{
        {"https://zarn.example",
            [&] {
                sessions.fail({UrlErrorCode::ConnectionRefused, ""});
            },
            3, "zarn-profile: zarn.example refused the connection on port 443"},
        {"https://zarn.example", [&] { sessions.reply(500, ""); }, 1,
            "zarn-profile: zarn.example has a problem of its own (HTTP 500)"},
        {"https://zarn.example", [&] { sessions.reply(200, "<html>"); }, 1,
            "zarn-profile: The reply of zarn.example is not JSON; check the address and port"},
        {"https://zarn.example",
            [&] {
                acceptToken();
                sessions.reply(200, R"({"version":"11"})");
            },
            1, "zarn-profile: The version \"11\" of zarn.example was not understood"},
        {"https://zarn example", [] {}, 2, "zarn-profile: The server URL holds a blank"},
    }};
    for (const auto& [url, script, code, text] : cases) {
        terminal.input = {"secret"};
        script();
        EXPECT_EQ(run({"add", "Demo", "--url", url, "--client-id", "id"}), code);
        EXPECT_EQ(terminal.errors, Texts{text});
        EXPECT_EQ(names(), Texts{});
        EXPECT_EQ(items(), Texts{});
    }
}

TEST_F(ChangingCommandsTest, ASecretIsAskedForUnseenAfterTheLockAndWithoutIt)
{
    terminal.inputIsTerminal = true;
    terminal.input.emplace_back("s3cret");
    terminal.onRead = [this] { platform.events.emplace_back("read"); };
    accept();
    EXPECT_EQ(addDemo(), 0);
    EXPECT_EQ(terminal.prompts, Texts{"Client secret of id at zarn.example: (unseen)"});
    Texts locking;
    for (const auto& event : platform.events) {
        if (event == "lock" || event == "unlock" || event == "read")
            locking.push_back(event);
    }
    EXPECT_EQ(locking, (Texts{"lock", "unlock", "read", "lock"}));
}

TEST_F(ChangingCommandsTest, WithoutASecretNothingIsAsked)
{
    for (const auto& input : {Texts{}, Texts{""}, Texts{"\xff"}}) {
        terminal.input.assign(input.begin(), input.end());
        EXPECT_EQ(addDemo(), 2);
        EXPECT_EQ(platform.urlSessions.requests.size(), 0U);
    }
}

TEST_F(ChangingCommandsTest, AnInterruptionBeforeTheReplyChangesNothing)
{
    addTwo();
    const auto before = stored();
    terminal.input.emplace_back("secret");
    loop.whileWaiting = [this] {
        loop.interrupted = true;
        return true;
    };
    EXPECT_EQ(addDemo(), 130);
    EXPECT_EQ(stored(), before);
    EXPECT_EQ(terminal.errors, Texts{});
}

TEST_F(ChangingCommandsTest, AnInterruptionWhileTheSecretIsTypedChangesNothing)
{
    terminal.onRead = [this] { loop.interrupted = true; };
    EXPECT_EQ(addDemo(), 130);
    EXPECT_EQ(platform.urlSessions.requests.size(), 0U);
    EXPECT_EQ(names(), Texts{});
}

TEST_F(ChangingCommandsTest, AddIfMissingDoesNothingForTheSameServerWithItsSecret)
{
    add("Demo");
    const auto before = stored();
    EXPECT_EQ(addDemo({"--if-missing"}), 0);
    EXPECT_EQ(stored(), before);
    EXPECT_EQ(requestedUrls(), Texts{});
    EXPECT_EQ(std::ranges::count(platform.events, "lock"), 0);
    // Another user, another address or no secret make it another one.
    terminal.input = {"s1", "s2", "s3"};
    accept();
    EXPECT_EQ(run({"add", "Demo", "--url", "https://zarn.example", "--client-id", "second",
                  "--if-missing"}),
        0);
    EXPECT_EQ(requestedUrls().size(), 2U);
    accept();
    EXPECT_EQ(
        run({"add", "Demo", "--url", "https://new.example", "--client-id", "id", "--if-missing"}),
        0);
    EXPECT_EQ(requestedUrls().size(), 4U);
    platform.keychain.items.clear();
    accept();
    EXPECT_EQ(
        run({"add", "Demo", "--url", "https://new.example", "--client-id", "id", "--if-missing"}),
        0);
    EXPECT_EQ(requestedUrls().size(), 6U);
}

TEST_F(ChangingCommandsTest, SetProvesANewSecretWithTheStoredUserAndMakesTheServerCurrent)
{
    addTwo();
    terminal.input.emplace_back("new");
    accept();
    EXPECT_EQ(run({"set", "Berlin"}), 0);
    EXPECT_EQ(terminal.output, "Berlin was successfully set\n");
    EXPECT_EQ(actions().at("currentServer"), Value("Berlin"));
    EXPECT_EQ(actions().at("username"), Value("b-id"));
    EXPECT_EQ(items().front(), "zortcuts-apiClient-berlin.example/b-id=new");
    EXPECT_EQ(names(), (Texts{"Berlin", "Bonn"}));
}

TEST_F(ChangingCommandsTest, SetMayChangeTheKindOfCredentials)
{
    addTwo();
    terminal.input.emplace_back("pass");
    accept("token");
    EXPECT_EQ(run({"set", "Berlin", "--user", "admin"}), 0);
    EXPECT_EQ(actions().at("useUsername"), Value(1));
    const auto all = items();
    EXPECT_NE(std::ranges::find(all, "ZPMA-berlin.example/admin=pass"), all.end());
}

TEST_F(ChangingCommandsTest, SetOfNothingIsNotFound)
{
    EXPECT_EQ(run({"set", "Nowhere"}), 4);
    EXPECT_EQ(
        error(), "zarn-profile: no server \"Nowhere\" is registered; see 'zarn-profile list'");
    add("Demo");
    platform.keychain.items.clear();
    EXPECT_EQ(run({"set", "Demo"}), 4);
    EXPECT_EQ(error(), "zarn-profile: no user of \"Demo\" is stored; use --user or --client-id");
}

TEST_F(ChangingCommandsTest, UseMakesAServerCurrentWithoutAskingTheKeyring)
{
    addTwo();
    platform.keychain.copyStatus = keychain_status::interactionNotAllowed;
    const auto queries = platform.keychain.queries.size();
    EXPECT_EQ(run({"use", "Berlin"}), 0);
    EXPECT_EQ(terminal.output, "\"Berlin\" is the current server\n");
    EXPECT_EQ(actions().at("currentServer"), Value("Berlin"));
    EXPECT_EQ(platform.keychain.queries.size(), queries);
    EXPECT_EQ(run({"use", "Nowhere"}), 4);
    EXPECT_EQ(run({"use", "Add Server..."}), 4);
    EXPECT_EQ(actions().at("currentServer"), Value("Berlin"));
}

TEST_F(ChangingCommandsTest, RemoveTakesAServerOffTheListAndNothingElse)
{
    addTwo();
    const auto itemsBefore = items();
    const auto actionsBefore = actions();
    EXPECT_EQ(run({"remove", "--yes", "Bonn"}), 0);
    EXPECT_EQ(names(), Texts{"Berlin"});
    EXPECT_EQ(items(), itemsBefore);
    EXPECT_EQ(actions(), actionsBefore);
    EXPECT_EQ(terminal.output, "\"Bonn\" was removed from the list; its keychain items stay\n");
    EXPECT_EQ(run({"remove", "--yes", "Bonn"}), 4);
}

TEST_F(ChangingCommandsTest, RemoveAsksAsTheWindowDoes)
{
    addTwo();
    EXPECT_EQ(run({"remove", "Bonn"}), 2);
    terminal.inputIsTerminal = true;
    for (const auto* answer : {"", "n", "nonsense"}) {
        terminal.input = {answer};
        EXPECT_EQ(run({"remove", "Bonn"}), 0);
        EXPECT_EQ(terminal.output, "nothing was removed\n");
        EXPECT_EQ(names(), (Texts{"Berlin", "Bonn"}));
    }
    EXPECT_EQ(
        terminal.prompts.back(), "Are you sure you want to remove Bonn from the list? [y/N] ");
    terminal.input = {"y"};
    EXPECT_EQ(run({"remove", "Bonn"}), 0);
    EXPECT_EQ(names(), Texts{"Berlin"});
}

TEST_F(ChangingCommandsTest, AnInterruptedQuestionRemovesNothing)
{
    addTwo();
    terminal.inputIsTerminal = true;
    terminal.onRead = [this] { loop.interrupted = true; };
    EXPECT_EQ(run({"remove", "Bonn"}), 130);
    EXPECT_EQ(names(), (Texts{"Berlin", "Bonn"}));
}

TEST_F(ChangingCommandsTest, WithoutTheLockNothingIsAskedAndNothingChanges)
{
    addTwo();
    const auto before = stored();
    struct Case {
        InstanceLock::Outcome outcome;
        int code;
        const char* text;
    };
    for (const auto& [outcome, code, text] :
        {Case{InstanceLock::Outcome::WindowOpen, 7,
             "zarn-profile: the window of Zarn Actions is open and would undo this; quit it or do "
             "this there"},
            Case{InstanceLock::Outcome::Busy, 7,
                "zarn-profile: another command is changing the profiles; try again"},
            Case{InstanceLock::Outcome::Failed, 8,
                "zarn-profile: the folder of the settings cannot be used, or is in use on another "
                "machine"}}) {
        lock.outcome = outcome;
        terminal.input = {"secret"};
        for (const auto& words :
            {Texts{"add", "Demo", "--url", "https://zarn.example", "--user", "admin"},
                Texts{"set", "Berlin"}, Texts{"use", "Berlin"}, Texts{"remove", "-y", "Berlin"}}) {
            EXPECT_EQ(run(words), code);
            EXPECT_EQ(terminal.errors, Texts{text});
        }
        EXPECT_EQ(terminal.input.size(), 1U);
        EXPECT_EQ(stored(), before);
    }
}

TEST_F(ChangingCommandsTest, ALockedKeyringIsReportedBeforeAnythingIsAskedOrChanged)
{
    addTwo();
    const auto before = stored();
    platform.keychain.copyStatus = keychain_status::interactionNotAllowed;
    terminal.input = {"secret"};
    for (const auto& words :
        {Texts{"add", "Demo", "--url", "https://zarn.example", "--user", "admin"},
            Texts{"set", "Berlin"},
            Texts{"add", "Bonn", "--url", "https://bonn.example", "--client-id", "n-id",
                "--if-missing"}}) {
        EXPECT_EQ(run(words), 5);
        ASSERT_EQ(terminal.errors.size(), 1U);
        EXPECT_NE(error().find("; unlock it in a desktop session of this user"), std::string::npos)
            << error();
    }
    EXPECT_EQ(requestedUrls(), Texts{});
    EXPECT_EQ(terminal.input.size(), 1U);
    EXPECT_EQ(stored(), before);
}

TEST_F(ChangingCommandsTest, ASecretThatIsNotStoredInTheEndIsAnError)
{
    platform.keychain.addStatus = keychain_status::userCanceled;
    terminal.input = {"secret"};
    accept();
    EXPECT_EQ(addDemo(), 5);
    EXPECT_EQ(terminal.output, "");
    EXPECT_EQ(
        error().find("zarn-profile: the server is registered, but its secret was not stored: "),
        0U);
}

TEST_F(ChangingCommandsTest, NoSecretIsPrinted)
{
    terminal.inputIsTerminal = true;
    terminal.outputIsTerminal = true;
    terminal.errorIsTerminal = true;
    terminal.input.emplace_back("s3cret");
    accept();
    EXPECT_EQ(addDemo(), 0);
    EXPECT_EQ(terminal.errors,
        (Texts{"Asking zarn.example for a token", "Asking zarn.example for its version"}));
    for (const auto& text : {terminal.output, terminal.errors[0], terminal.errors[1]})
        EXPECT_EQ(text.find("s3cret"), std::string::npos);
    for (const auto& [path, contents] : platform.fileManager.files)
        EXPECT_EQ(contents.find("s3cret"), std::string::npos) << path;
}

TEST_F(ChangingCommandsTest, TwoCommandsInOneSecondKeepBothLogs)
{
    addTwo();
    std::string all;
    for (const auto& [path, contents] : platform.fileManager.files)
        all += contents;
    EXPECT_NE(all.find("Attempting to retrieve token from https://berlin"), std::string::npos);
    EXPECT_NE(all.find("Attempting to retrieve token from https://bonn"), std::string::npos);
}

TEST_F(ChangingCommandsTest, ANameThatNoFieldCouldHoldIsRefused)
{
    for (const auto* name : {"a\nb", "\x7f", "\xff"})
        EXPECT_EQ(run({"add", name, "--url", "https://zarn.example", "--user", "u"}), 2);
}

} // namespace
} // namespace zarn
