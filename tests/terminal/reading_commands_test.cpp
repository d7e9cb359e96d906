// SPDX-License-Identifier: MIT
#include "base/json.h"
#include "tests/terminal/terminal_fixture.h"

namespace zarn {
namespace {

using Texts = std::vector<std::string>;

class ReadingCommandsTest : public TerminalTest {
protected:
    ReadingCommandsTest()
    {
        add("b \"q\" \\ ü", "https://berlin.example:8443/", "b-id", "b-secret");
        add("A", "https://a.example", "a-id", "a-secret");
    }
    Value printed() const
    {
        const auto parsed = parseJson(terminal.output);
        EXPECT_TRUE(parsed) << terminal.output;
        return parsed ? parsed.value() : Value();
    }
    Value member(std::string_view name) const
    {
        const auto object = printed();
        const auto it = object.dictionary()->find(std::string(name));
        return it == object.dictionary()->end() ? Value("absent") : it->second;
    }
    /// A command that reads neither takes the lock nor changes what is stored, nor logs.
    void expectUntouched(const Texts& words)
    {
        const auto before = stored();
        const auto files = platform.fileManager.files;
        platform.events.clear();
        (void)run(words);
        EXPECT_EQ(stored(), before);
        EXPECT_EQ(platform.fileManager.files, files);
        EXPECT_EQ(std::ranges::count(platform.events, "lock"), 0);
    }
};

TEST_F(ReadingCommandsTest, ListHasTheOrderOfTheMenuAndMarksTheCurrentServer)
{
    EXPECT_EQ(run({"list"}), 0);
    EXPECT_EQ(
        terminal.output, "* A\thttps://a.example\n  b \"q\" \\ ü\thttps://berlin.example:8443/\n");
    EXPECT_EQ(run({"list", "--json"}), 0);
    const auto list = printed();
    ASSERT_EQ(list.array()->size(), 2U);
    EXPECT_EQ(list.array()->at(1),
        Value(Value::Dictionary{{"name", "b \"q\" \\ ü"}, {"current", false},
            {"server", "https://berlin.example:8443/"},
            {"added", dateText(platform.clock.now())}}));
}

TEST_F(ReadingCommandsTest, ListOfNothingIsEmpty)
{
    shared().clear();
    EXPECT_EQ(run({"list"}), 0);
    EXPECT_EQ(terminal.output, "");
    EXPECT_EQ(run({"list", "--json"}), 0);
    EXPECT_EQ(printed(), Value(Value::Array{}));
    EXPECT_EQ(shared(), Value::Dictionary{});
}

TEST_F(ReadingCommandsTest, ListLeavesOutWhatTheMenuLeavesOut)
{
    auto& profiles = *shared()["serversDict"].dictionary();
    profiles[""] = Value::Dictionary{{"server", "https://nameless.example"}};
    profiles["path"] = Value::Dictionary{{"server", "/no/server"}};
    profiles["undated"] = Value::Dictionary{{"server", "https://undated.example"}};
    EXPECT_EQ(run({"list", "--json"}), 0);
    const auto list = printed();
    ASSERT_EQ(list.array()->size(), 3U);
    EXPECT_EQ(list.array()->at(2).dictionary()->at("added"), Value());
}

TEST_F(ReadingCommandsTest, ListAndShowWorkWithoutTheTermsAndWithALockedKeyring)
{
    platform.settings.standard().values.clear();
    platform.keychain.copyStatus = keychain_status::interactionNotAllowed;
    platform.keychain.queries.clear();
    EXPECT_EQ(run({"list"}), 0);
    EXPECT_EQ(run({"show"}), 0);
    EXPECT_EQ(platform.keychain.queries.size(), 0U);
    for (const auto& words : {Texts{"check"}, Texts{"token"}, Texts{"api", "GET", "buildings"},
             Texts{"use", "A"}, Texts{"remove", "-y", "A"}, Texts{"set", "A"},
             Texts{"add", "A", "--url", "u", "--user", "x"}}) {
        EXPECT_EQ(run(words), 6) << words[0];
        EXPECT_EQ(error(),
            "zarn-profile: the terms of use are not accepted: read them with 'zarn-profile terms', "
            "then accept them with 'zarn-profile terms --accept'");
    }
}

TEST_F(ReadingCommandsTest, ReadingChangesNothing)
{
    for (const auto& words :
        {Texts{"list"}, Texts{"show"}, Texts{"show", "--reveal"}, Texts{"terms"}})
        expectUntouched(words);
    accept();
    expectUntouched({"check"});
    acceptToken();
    expectUntouched({"token"});
    acceptToken();
    platform.urlSessions.reply(200, "{}");
    expectUntouched({"api", "GET", "buildings"});
}

TEST_F(ReadingCommandsTest, ShowPrintsTheProfileWithoutItsSecret)
{
    EXPECT_EQ(run({"show"}), 0);
    EXPECT_EQ(terminal.output,
        "Name:          A\nServer:        https://a.example\nAdded:         "
            + dateText(platform.clock.now()) + "\nCurrent:       yes\nClient ID:     a-id\n");
    EXPECT_EQ(run({"show", "b \"q\" \\ ü", "--json"}), 0);
    EXPECT_EQ(member("username"), Value());
    EXPECT_EQ(member("credentials"), Value());
    EXPECT_EQ(member("secret"), Value("absent"));
    EXPECT_EQ(run({"show", "nobody"}), 4);
    EXPECT_EQ(terminal.output, "");
}

TEST_F(ReadingCommandsTest, ShowRevealsTheSecretWhenToldAndNotOnATerminal)
{
    EXPECT_EQ(run({"show", "--reveal", "--json"}), 0);
    EXPECT_EQ(member("secret"), Value("a-secret"));
    EXPECT_EQ(member("credentials"), Value("api-client"));
    EXPECT_EQ(run({"show", "--reveal", "b \"q\" \\ ü"}), 0);
    EXPECT_NE(terminal.output.find("Client secret: b-secret\n"), std::string::npos);
    terminal.outputIsTerminal = true;
    EXPECT_EQ(run({"show", "--reveal", "--json"}), 2);
    EXPECT_EQ(terminal.output, "");
    EXPECT_EQ(run({"show", "--reveal", "--force"}), 0);
    EXPECT_NE(terminal.output.find("a-secret"), std::string::npos);
}

TEST_F(ReadingCommandsTest, WithoutACurrentServerANameIsNeeded)
{
    actions()["currentServer"] = "gone";
    EXPECT_EQ(run({"show"}), 4);
    EXPECT_EQ(error(), "zarn-profile: no server is current; choose one with 'zarn-profile use'");
    EXPECT_EQ(run({"show", "A"}), 0);
}

TEST_F(ReadingCommandsTest, TokenPrintsANewTokenAndNothingElse)
{
    acceptToken();
    EXPECT_EQ(run({"token"}), 0);
    EXPECT_EQ(terminal.output, "t0k3n\n");
    EXPECT_EQ(terminal.errors, Texts{});
    EXPECT_EQ(requestedUrls(), Texts{"POST https://a.example/api/oauth/token"});
    EXPECT_EQ(platform.urlSessions.requests[0].body,
        "grant_type=client_credentials&client_id=a-id&client_secret=a-secret");
    acceptToken();
    EXPECT_EQ(run({"token", "b \"q\" \\ ü", "--json"}), 0);
    EXPECT_EQ(printed(),
        Value(Value::Dictionary{{"server", "https://berlin.example:8443/"}, {"token", "t0k3n"}}));
}

TEST_F(ReadingCommandsTest, TokenIsNeverTheBasicCredentials)
{
    platform.settings.standard().values["forceBasicAuth"] = 1;
    acceptToken();
    EXPECT_EQ(run({"token"}), 0);
    EXPECT_EQ(terminal.output, "t0k3n\n");
}

TEST_F(ReadingCommandsTest, TokenFailsWithTheCauseAndItsCode)
{
    platform.urlSessions.reply(401, "");
    EXPECT_EQ(run({"token"}), 1);
    EXPECT_EQ(terminal.errors,
        Texts{"zarn-profile: A: a.example does not accept these credentials (HTTP 401)"});
    platform.urlSessions.reply(200, "{}");
    EXPECT_EQ(run({"token"}), 1);
    EXPECT_EQ(error(), "zarn-profile: A: a.example did not send a token; check the address");
    platform.urlSessions.fail({UrlErrorCode::TimedOut, ""});
    EXPECT_EQ(run({"token"}), 3);
    EXPECT_EQ(error(), "zarn-profile: A: a.example did not answer in time");
    platform.keychain.copyStatus = keychain_status::interactionNotAllowed;
    EXPECT_EQ(run({"token"}), 5);
    platform.keychain.copyStatus = keychain_status::success;
    platform.keychain.items.clear();
    EXPECT_EQ(run({"token"}), 4);
    EXPECT_EQ(error(),
        "zarn-profile: A: the keyring has no secret for it; store one with 'zarn-profile set'");
    EXPECT_EQ(terminal.output, "");
}

TEST_F(ReadingCommandsTest, CheckAsksLikeTheWindowAndPrintsALineForEachServer)
{
    accept();
    EXPECT_EQ(run({"check"}), 0);
    EXPECT_EQ(terminal.output, "A: works\n");
    EXPECT_EQ(requestedUrls(),
        (Texts{"POST https://a.example/api/oauth/token",
            "GET https://a.example/api/v1/zarn-pro-version"}));
    platform.urlSessions.fail({UrlErrorCode::CertificateExpired, ""});
    accept();
    EXPECT_EQ(run({"check", "--all"}), 3);
    EXPECT_EQ(
        terminal.output, "A: The certificate of a.example has expired\nb \"q\" \\ ü: works\n");
    EXPECT_EQ(terminal.errors, Texts{});
}

TEST_F(ReadingCommandsTest, CheckAsksEachServerForItsOwnVersion)
{
    accept();
    accept();
    EXPECT_EQ(run({"check", "--all", "--json"}), 0);
    EXPECT_EQ(requestedUrls().size(), 4U);
    const auto list = printed();
    EXPECT_EQ(list.array()->at(0),
        Value(Value::Dictionary{{"name", "A"}, {"server", "https://a.example"}, {"works", true},
            {"cause", Value()}, {"exitStatus", 0}}));
}

TEST_F(ReadingCommandsTest, CheckReportsAVersionThatIsNotUnderstood)
{
    acceptToken();
    platform.urlSessions.reply(200, R"({"version":""})");
    EXPECT_EQ(run({"check"}), 1);
    EXPECT_EQ(terminal.output, "A: a.example reported an empty version\n");
}

TEST_F(ReadingCommandsTest, ApiPrintsTheObjectThatTheServerSends)
{
    acceptToken();
    platform.urlSessions.reply(200, R"({"name":"a \" \\ \n ü","count":2})");
    EXPECT_EQ(run({"api", "GET", "/buildings"}), 0);
    EXPECT_EQ(printed(), Value(Value::Dictionary{{"name", "a \" \\ \n ü"}, {"count", 2}}));
    EXPECT_EQ(requestedUrls(),
        (Texts{
            "POST https://a.example/api/oauth/token", "GET https://a.example/api/v1/buildings"}));
    const auto& headers = platform.urlSessions.requests[1].headers;
    EXPECT_NE(std::ranges::find(
                  headers, std::pair<std::string, std::string>("Authorization", "Bearer t0k3n")),
        headers.end());
}

TEST_F(ReadingCommandsTest, ApiSendsAnObjectFromAFile)
{
    terminal.files["-"] = R"({"name":"x"})";
    acceptToken();
    platform.urlSessions.reply(201, R"({"id":"1"})");
    EXPECT_EQ(run({"api", "POST", "computers", "--data", "-", "A"}), 0);
    EXPECT_EQ(platform.urlSessions.requests[1].method, "POST");
    EXPECT_EQ(parseJson(platform.urlSessions.requests[1].body.value_or("")).value(),
        Value(Value::Dictionary{{"name", "x"}}));
    terminal.files["list"] = "[1]";
    for (const auto* file : {"list", "nowhere"})
        EXPECT_EQ(run({"api", "POST", "computers", "--data", file}), 2);
}

TEST_F(ReadingCommandsTest, ApiHasTheStatusInItsExitCode)
{
    acceptToken();
    platform.urlSessions.reply(404, R"({"secret":"reply"})");
    EXPECT_EQ(run({"api", "GET", "nowhere"}), 1);
    EXPECT_EQ(
        error(), "zarn-profile: A: a.example has no Zarn Pro service at this address (HTTP 404)");
    EXPECT_EQ(terminal.output, "");
    acceptToken();
    platform.urlSessions.reply(204, "");
    EXPECT_EQ(run({"api", "POST", "auth/invalidate-token"}), 0);
    acceptToken();
    platform.urlSessions.reply(204, "");
    EXPECT_EQ(run({"api", "PUT", "computers/1"}), 0);
    EXPECT_EQ(terminal.output, "");
    acceptToken();
    platform.urlSessions.fail({UrlErrorCode::ConnectionLost, ""});
    EXPECT_EQ(run({"api", "GET", "buildings"}), 3);
    EXPECT_EQ(run({"api", "GET", "with blank"}), 2);
    EXPECT_EQ(run({"api", "DELETE", "computers/1"}), 2);
}

TEST_F(ReadingCommandsTest, OutputThatIsLostIsAnError)
{
    terminal.writingFails = true;
    EXPECT_EQ(run({"list"}), 8);
    EXPECT_EQ(error(), "zarn-profile: standard output cannot be written");
    accept();
    EXPECT_EQ(run({"check"}), 8);
}

TEST_F(ReadingCommandsTest, AnInterruptionEndsTheWaitForAServer)
{
    loop.whileWaiting = [this] {
        loop.interrupted = true;
        return true;
    };
    for (const auto& words : {Texts{"token"}, Texts{"check"}, Texts{"api", "GET", "buildings"}}) {
        loop.interrupted = false;
        EXPECT_EQ(run(words), 130);
        EXPECT_EQ(terminal.errors, Texts{});
        EXPECT_EQ(terminal.output, "");
    }
}

} // namespace
} // namespace zarn
