// SPDX-License-Identifier: MIT
#include "api/token_delegate.h"

#include "base/utf8.h"
#include "tests/api/api_fixture.h"

#include <functional>
#include <initializer_list>

namespace zarn {
namespace {

using Lines = std::vector<std::string>;

class TokenDelegateTest : public ApiFixture {
protected:
    void getToken(const std::string& server = "https://zarn.example")
    {
        delegate->getToken(server, connection.base64Creds, completion());
    }
    void useUsername()
    {
        connection.useApiClient = 0;
        connection.base64Creds = "YWRtaW46cHc=";
    }
    void useApiClient()
    {
        connection.username = "id&1";
        connection.password = "s=c r%t";
        connection.base64Creds = "aWQ6c2VjcmV0";
    }
};

TEST_F(TokenDelegateTest, AUserNameAndPasswordTravelInTheAuthorizationHeader)
{
    useUsername();
    getToken();
    ASSERT_EQ(sessions.requests.size(), 1U);
    const auto& request = sessions.requests[0];
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.url, "https://zarn.example/api/v1/auth/token");
    EXPECT_EQ(request.body, std::nullopt);
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_EQ(request.storage, UrlSessionConfiguration::Storage::Ephemeral);
    EXPECT_EQ(request.trust, ServerTrust::Evaluate);
    EXPECT_EQ(request.delegate, delegate.get());
    const HttpHeaders expected{{"Authorization", "Basic YWRtaW46cHc="},
        {"Content-Type", "application/json"}, {"Accept", "application/json"},
        {"User-Agent", "zarn%2Dactions/1.4.2"}};
    EXPECT_EQ(request.headers, expected);
}

TEST_F(TokenDelegateTest, AnApiClientTravelsVerbatimInTheFormBody)
{
    useApiClient();
    getToken();
    ASSERT_EQ(sessions.requests.size(), 1U);
    const auto& request = sessions.requests[0];
    EXPECT_EQ(request.url, "https://zarn.example/api/oauth/token");
    EXPECT_EQ(request.body, "grant_type=client_credentials&client_id=id&1&client_secret=s=c r%t");
    const HttpHeaders expected{{"Content-Type", "application/x-www-form-urlencoded"},
        {"Accept", "application/json"}, {"User-Agent", "zarn%2Dactions/1.4.2"}};
    EXPECT_EQ(request.headers, expected);
}

TEST_F(TokenDelegateTest, TheCacheIsEmptiedBeforeTheRequest)
{
    getToken();
    EXPECT_EQ(sessions.cacheClears, 1);
    std::vector<std::string> network;
    for (const auto& event : events) {
        if (event.starts_with("empty") || event.starts_with("request"))
            network.push_back(event);
    }
    EXPECT_EQ(network,
        (Lines{"empty the URL cache", "request POST https://zarn.example/api/oauth/token"}));
}

TEST_F(TokenDelegateTest, AMalformedUrlFailsAtOnceWithoutARequest)
{
    useUsername();
    getToken("https://zarn example");
    EXPECT_EQ(outcomes, (Lines{"500 failed"}));
    EXPECT_TRUE(sessions.requests.empty());
    EXPECT_EQ(logLines(),
        (Lines{"[TokenDelegate.getToken] Force basic authentication on https://zarn example: false",
            "[TokenDelegate.getToken] Problem constructing the URL from https://zarn "
            "example/api/v1/auth/token"}));
}

TEST_F(TokenDelegateTest, AMalformedUrlIsLoggedBeforeItsCompletion)
{
    std::size_t linesBefore = 0;
    delegate->getToken("https://zarn example", "",
        [&](std::int64_t, const std::string&) { linesBefore = logLines().size(); });
    EXPECT_EQ(linesBefore, 2U);
}

TEST_F(TokenDelegateTest, NoResponseIsAFailedConnection)
{
    connection.bearerTokenActive = true;
    connection.token = "old";
    getToken();
    sessions.deliverAll();
    EXPECT_EQ(outcomes, (Lines{"0 failedToConnect"}));
    EXPECT_FALSE(connection.bearerTokenActive);
    EXPECT_EQ(connection.token, "old");
    EXPECT_EQ(sessions.sessionsInvalidated, 1);
}

TEST_F(TokenDelegateTest, EveryStatusOutsideTheTwoHundredsIsAFailedAuthentication)
{
    for (const int status : {100, 199, 300, 302, 400, 401, 403, 404, 500, 503}) {
        outcomes.clear();
        connection.bearerTokenActive = true;
        sessions.reply(status, R"({"token":"t"})");
        getToken();
        sessions.deliverAll();
        EXPECT_EQ(outcomes, Lines{std::to_string(status) + " failedToAuthenticate"});
        EXPECT_FALSE(connection.bearerTokenActive);
        EXPECT_EQ(connection.token, "");
        EXPECT_EQ(connection.authScheme, "Basic");
    }
}

TEST_F(TokenDelegateTest, AReplyThatIsNoObjectFails)
{
    for (const char* body : {"", "[]", "42", "\"text\"", "null", "{", "{\"token\":}"}) {
        outcomes.clear();
        connection.bearerTokenActive = true;
        sessions.reply(201, body);
        getToken();
        sessions.deliverAll();
        EXPECT_EQ(outcomes, (Lines{"201 failed"})) << body;
        EXPECT_FALSE(connection.bearerTokenActive);
    }
}

TEST_F(TokenDelegateTest, TheJsonErrorIsLoggedWithoutTheTextsOfTheReply)
{
    sessions.reply(200, R"(["a secret token", 7, {"k": "another secret"}])");
    getToken();
    sessions.deliverAll();
    const auto lines = logLines();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[2], "[TokenDelegate.getToken] JSON error.");
    for (const auto& [path, contents] : files.files)
        EXPECT_EQ(contents.find("secret"), std::string::npos);
    EXPECT_TRUE(files.files.begin()->second.ends_with(
        "JSON error.\nOptional((\"(14 bytes of text)\", 7, {k = \"(14 bytes of text)\"; }))\n"))
        << files.files.begin()->second;
}

TEST_F(TokenDelegateTest, ALoggedReplyEndsAfter4096BytesAndNotWithinACharacter)
{
    std::string umlauts;
    for (int i = 0; i < 3000; ++i)
        umlauts += "\xC3\xA4";
    const struct {
        std::string key;
        std::string logged;
    } rows[] = {
        {std::string(4086, 'k'), "Optional(({" + std::string(4086, 'k') + " = 1; }))\n"},
        {std::string(4087, 'k'), "Optional(({" + std::string(4087, 'k') + " = 1; }...)\n"},
        {"k" + umlauts, "Optional(({k" + umlauts.substr(0, 4092) + "...)\n"},
    };
    for (const auto& row : rows) {
        sessions.reply(200, R"([{")" + row.key + R"(":1}])");
        getToken();
        sessions.deliverAll();
        EXPECT_TRUE(files.files.begin()->second.ends_with(row.logged)) << row.key.size();
    }
}

TEST_F(TokenDelegateTest, AnUnparsableReplyIsLoggedAsNil)
{
    sessions.reply(200, "<html>");
    getToken();
    sessions.deliverAll();
    EXPECT_TRUE(
        files.files.begin()->second.ends_with("[TokenDelegate.getToken] JSON error.\nnil\n"));
}

TEST_F(TokenDelegateTest, ATokenIsAdoptedAndTheVersionAskedFor)
{
    useUsername();
    sessions.reply(200, R"({"token":"abc","expires":"2025"})");
    getToken();
    ASSERT_TRUE(sessions.deliver());
    EXPECT_EQ(connection.token, "abc");
    EXPECT_EQ(connection.authScheme, "Bearer");
    EXPECT_TRUE(connection.bearerTokenActive);
    EXPECT_EQ(connection.tokenCreated, clock.time);
    EXPECT_TRUE(outcomes.empty());
    ASSERT_EQ(sessions.requests.size(), 2U);
    const auto& probe = sessions.requests[1];
    EXPECT_EQ(probe.method, "GET");
    EXPECT_EQ(probe.url, "https://zarn.example/api/v1/zarn-pro-version");
    EXPECT_EQ(probe.body, std::nullopt);
    const HttpHeaders expected{{"Authorization", "Bearer abc"},
        {"Content-Type", "application/json"}, {"Accept", "application/json"},
        {"User-Agent", "zarn%2Dactions/1.4.2"}};
    EXPECT_EQ(probe.headers, expected);
    EXPECT_EQ(probe.storage, UrlSessionConfiguration::Storage::Default);
}

TEST_F(TokenDelegateTest, TheApiClientsTokenHasItsOwnKey)
{
    useApiClient();
    sessions.reply(200, R"({"token":"wrong","access_token":"right"})");
    getToken();
    sessions.deliver();
    EXPECT_EQ(connection.token, "right");
}

TEST_F(TokenDelegateTest, TheLogTellsEachStepInOrder)
{
    useUsername();
    sessions.reply(200, R"({"token":"abc"})");
    sessions.reply(200, R"({"version":"11.40.0-t1712"})");
    getToken("https://zarn.example:8443/");
    sessions.deliverAll();
    EXPECT_EQ(logLines(),
        (Lines{"[TokenDelegate.getToken] Force basic authentication on https://zarn.example:8443/: "
               "false",
            "[TokenDelegate.getToken] Attempting to retrieve token from "
            "https://zarn.example:8443/api/v1/auth/token for version look-up",
            "[TokenDelegate.getToken] new token created for https://zarn.example:8443/",
            "[Zpapi.action] Attempting GET on https://zarn.example:8443/api/v1/zarn-pro-version.",
            "[TokenDelegate.getVersion] Zarn Pro Version: 11.40.0-t1712",
            "[TokenDelegate.getVersion] https://zarn.example:8443/ set to use Bearer Token"}));
}

TEST_F(TokenDelegateTest, ForcedBasicAuthenticationIsOnForExactlyOne)
{
    const struct {
        Value value;
        const char* flag;
    } rows[]
        = {{1, "true"}, {"1", "true"}, {true, "true"}, {0, "false"}, {2, "false"}, {-1, "false"}};
    for (const auto& row : rows) {
        files.files.clear();
        settings.standard().set("forceBasicAuth", row.value);
        getToken();
        EXPECT_EQ(logLines().at(0),
            std::string(
                "[TokenDelegate.getToken] Force basic authentication on https://zarn.example: ")
                + row.flag);
    }
}

TEST_F(TokenDelegateTest, NothingIsCalledBeforeTheReply)
{
    getToken();
    EXPECT_TRUE(outcomes.empty());
    EXPECT_EQ(sessions.running(), 1U);
}

/// Tells how many lines the log had when the network was touched.
class ObservedSessions final : public UrlSessions {
public:
    ObservedSessions(memory::MemoryUrlSessions& sessions, std::function<std::size_t()> logLength)
        : m_sessions(sessions)
        , m_logLength(std::move(logLength))
    {
    }
    std::shared_ptr<UrlSession> makeSession(
        const UrlSessionConfiguration& configuration, UrlSessionDelegate& observed) override
    {
        steps.push_back("session at " + std::to_string(m_logLength()));
        return m_sessions.makeSession(configuration, observed);
    }
    void removeAllCachedResponses() override
    {
        steps.push_back("cache at " + std::to_string(m_logLength()));
        m_sessions.removeAllCachedResponses();
    }
    std::vector<std::string> steps;

private:
    memory::MemoryUrlSessions& m_sessions;
    std::function<std::size_t()> m_logLength;
};

TEST_F(TokenDelegateTest, TheCacheIsEmptiedBetweenTheTwoLogLinesOfARequest)
{
    ObservedSessions observed(sessions, [this] { return logLines().size(); });
    const auto client
        = std::make_shared<TokenDelegate>(TokenDelegate::Deps{.connection = connection,
            .sessions = observed,
            .standardDefaults = settings.standard(),
            .texts = texts,
            .clock = clock,
            .log = log,
            .alerts = alerts,
            .console = console,
            .status = statusLine});
    client->getToken("https://zarn.example", "", completion());
    EXPECT_EQ(observed.steps, (Lines{"cache at 1", "session at 2"}));
    client->getToken("not a URL", "", completion());
    EXPECT_EQ(observed.steps, (Lines{"cache at 1", "session at 2", "cache at 3"}));
}

TEST_F(TokenDelegateTest, AnActionEmptiesTheCacheBeforeItsLogLine)
{
    ObservedSessions observed(sessions, [this] { return logLines().size(); });
    const auto client
        = std::make_shared<TokenDelegate>(TokenDelegate::Deps{.connection = connection,
            .sessions = observed,
            .standardDefaults = settings.standard(),
            .texts = texts,
            .clock = clock,
            .log = log,
            .alerts = alerts,
            .console = console,
            .status = statusLine});
    client->action(
        {"https://zarn.example", "icon", "", {}, "", "get"}, [](const auto&, const auto&) {});
    EXPECT_EQ(observed.steps, (Lines{"cache at 0", "session at 1"}));
}

TEST_F(TokenDelegateTest, TheReplyIsReadAsTheCredentialsOfTheRequest)
{
    useUsername();
    sessions.reply(200, R"({"token":"mine","access_token":"not mine"})");
    getToken();
    connection.useApiClient = 1;
    connection.base64Creds = "changed meanwhile";
    sessions.deliver();
    EXPECT_EQ(connection.token, "mine");
    EXPECT_EQ(connection.base64Creds, "YWRtaW46cHc=");
}

TEST_F(TokenDelegateTest, ForcedBasicAuthenticationIsReadWhenTheRequestIsMade)
{
    useUsername();
    settings.standard().set("forceBasicAuth", 1);
    sessions.reply(200, R"({"token":"abc"})");
    sessions.reply(200, R"({"version":"10.40.0"})");
    getToken();
    settings.standard().remove("forceBasicAuth");
    sessions.deliverAll();
    EXPECT_EQ(connection.authScheme, "Basic");
    EXPECT_EQ(connection.token, "YWRtaW46cHc=");
}

TEST_F(TokenDelegateTest, ForcedBasicAuthenticationIsNeverWritten)
{
    getToken();
    sessions.deliverAll();
    EXPECT_TRUE(settings.standard().values.empty());
}

TEST_F(TokenDelegateTest, EveryOtherKindOfCredentialFlagMeansUserNameAndPassword)
{
    for (const int flag : {0, 2, -1}) {
        connection.useApiClient = flag;
        getToken();
        EXPECT_EQ(sessions.requests.back().url, "https://zarn.example/api/v1/auth/token") << flag;
    }
}

TEST_F(TokenDelegateTest, ARequestOutlivesTheCallersReference)
{
    useUsername();
    sessions.reply(200, R"({"token":"abc"})");
    sessions.reply(200, R"({"version":"10.40.0"})");
    getToken();
    delegate.reset();
    sessions.deliverAll();
    EXPECT_EQ(outcomes, (Lines{"200 success"}));
}

TEST_F(TokenDelegateTest, NothingIsKeptOnceTheReplyWasHandled)
{
    useUsername();
    sessions.reply(200, R"({"token":"abc"})");
    sessions.reply(200, R"({"version":"10.40.0"})");
    auto captured = std::make_shared<int>(0);
    const std::weak_ptr<int> watched = captured;
    delegate->getToken("https://zarn.example", "",
        [captured = std::move(captured)](std::int64_t, const std::string&) { ++*captured; });
    EXPECT_FALSE(watched.expired());
    sessions.deliverAll();
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(delegate.use_count(), 1);
    EXPECT_EQ(sessions.sessionsInvalidated, 2);
}

TEST_F(TokenDelegateTest, TheSessionIsInvalidatedBeforeItsReplyIsHandled)
{
    useUsername();
    std::vector<int> invalidated;
    const auto validate = [&] {
        delegate->getToken("https://zarn.example", "", [&](std::int64_t, const std::string&) {
            invalidated.push_back(sessions.sessionsInvalidated);
        });
        sessions.deliverAll();
    };
    sessions.replyNothing();
    validate();
    sessions.reply(401, "");
    validate();
    sessions.reply(200, R"({"token":"abc"})");
    sessions.reply(200, R"({"version":"10.40.0"})");
    validate();
    EXPECT_EQ(invalidated, (std::vector<int>{1, 2, 4}));
}

TEST_F(TokenDelegateTest, AFailureLeavesTheLastTokenAndSchemeAsTheyWere)
{
    for (const auto& [status, body] : std::initializer_list<std::pair<int, const char*>>{
             {0, ""}, {401, "{}"}, {200, "no JSON"}}) {
        connection.token = "last";
        connection.authScheme = "Bearer";
        connection.base64Creds = "bGFzdA==";
        connection.bearerTokenActive = true;
        connection.tokenCreated = std::nullopt;
        if (status != 0)
            sessions.reply(status, body);
        delegate->getToken("https://zarn.example", "bmV3", completion());
        sessions.deliverAll();
        EXPECT_EQ(connection.token, "last") << status;
        EXPECT_EQ(connection.authScheme, "Bearer") << status;
        EXPECT_EQ(connection.base64Creds, "bGFzdA==") << status;
        EXPECT_EQ(connection.tokenCreated, std::nullopt) << status;
        EXPECT_FALSE(connection.bearerTokenActive) << status;
    }
}

TEST_F(TokenDelegateTest, ALongReplyIsCutBetweenCharactersInTheLog)
{
    // Keys are kept, texts are not. Each key holds two-byte characters only.
    std::string body = "[{\"";
    for (int i = 0; i < 5000; ++i)
        body += "\xC3\xA9";
    body += "\":1}]";
    for (const char* shift : {"", "x"}) {
        files.files.clear();
        std::string shifted = body;
        shifted.insert(3, shift);
        sessions.reply(200, shifted);
        getToken();
        sessions.deliverAll();
        const auto& written = files.files.begin()->second;
        EXPECT_LT(written.size(), 5000U);
        EXPECT_TRUE(isUtf8(written)) << shift;
        EXPECT_TRUE(written.ends_with("\xC3\xA9...)\n")) << shift;
    }
}

// --- Edge cases

using TokenEdgeCases = TokenDelegateTest;

TEST_F(TokenEdgeCases, AServerUrlThatEndsInASlashYieldsASingleSlashBeforeApi)
{
    useUsername();
    getToken("https://zarn.example/");
    EXPECT_EQ(sessions.requests.at(0).url, "https://zarn.example/api/v1/auth/token");
}

TEST_F(TokenEdgeCases, AHostThatBeginsWithApiLosesASlashAfterItsScheme)
{
    useUsername();
    getToken("https://api.zarn.example");
    EXPECT_EQ(sessions.requests.at(0).url, "https:/api.zarn.example/api/v1/auth/token");
}

TEST_F(TokenEdgeCases, AReplyWithoutATokenStillEndsInSuccessWithAnEmptyToken)
{
    connection.serverVersion = "11.0.0";
    connection.token = "old";
    for (const char* body : {"{}", R"({"access_token":7})", R"({"token":"other mode's key"})"}) {
        outcomes.clear();
        sessions.reply(200, body);
        getToken();
        sessions.deliverAll();
        EXPECT_EQ(outcomes, (Lines{"200 success"})) << body;
        EXPECT_EQ(connection.token, "");
    }
}

TEST_F(TokenEdgeCases, AnUnauthorizedReplyIsAFailedAuthentication)
{
    sessions.reply(401, R"({"httpStatus":401})");
    getToken();
    sessions.deliverAll();
    EXPECT_EQ(outcomes, (Lines{"401 failedToAuthenticate"}));
    EXPECT_EQ(sessions.requests.size(), 1U);
}

TEST_F(TokenEdgeCases, ARefusedConnectionIsAFailedConnection)
{
    sessions.replyNothing();
    getToken();
    sessions.deliverAll();
    EXPECT_EQ(outcomes, (Lines{"0 failedToConnect"}));
    EXPECT_EQ(sessions.requests.size(), 1U);
}

TEST_F(TokenEdgeCases, ASecondSuccessfulValidationCompletesWithoutAVersionRequest)
{
    useUsername();
    sessions.reply(200, R"({"token":"one"})");
    sessions.reply(200, R"({"version":"10.40.0"})");
    getToken();
    sessions.deliverAll();
    sessions.reply(299, R"({"token":"two"})");
    getToken("https://other.example");
    sessions.deliverAll();
    EXPECT_EQ(outcomes, (Lines{"200 success", "200 success"}));
    EXPECT_EQ(sessions.requests.size(), 3U);
    EXPECT_EQ(connection.token, "two");
    const auto lines = logLines();
    EXPECT_EQ(lines.back(),
        "[TokenDelegate.getVersion] call token refresh process for https://other.example");
    EXPECT_EQ(lines[lines.size() - 2],
        "[TokenDelegate.getToken] new token created for https://other.example");
}

TEST_F(TokenEdgeCases, ForcedBasicAuthenticationLeavesTheTokenRequestUnchangedAndForcesTheChoice)
{
    useUsername();
    getToken();
    sessions.deliverAll();
    settings.standard().set("forceBasicAuth", 1);
    sessions.reply(200, R"({"token":"abc"})");
    sessions.reply(200, R"({"version":"10.40.0"})");
    getToken();
    const auto& free = sessions.requests.at(0);
    const auto& forced = sessions.requests.at(1);
    EXPECT_EQ(forced.method, free.method);
    EXPECT_EQ(forced.url, free.url);
    EXPECT_EQ(forced.headers, free.headers);
    EXPECT_EQ(forced.body, free.body);
    EXPECT_EQ(forced.timeout, free.timeout);
    EXPECT_EQ(forced.storage, free.storage);
    sessions.deliverAll();
    EXPECT_EQ(connection.authScheme, "Basic");
    EXPECT_EQ(connection.token, "YWRtaW46cHc=");
}

TEST_F(TokenDelegateTest, ATokenAloneComesWithoutTheVersionAndStaysABearerToken)
{
    settings.standard().values["forceBasicAuth"] = 1;
    useApiClient();
    delegate->getTokenAlone("https://zarn.example", connection.base64Creds, completion());
    sessions.reply(200, R"({"access_token":"t0k3n"})");
    sessions.deliverAll();
    EXPECT_EQ(sessions.requests.size(), 1U);
    EXPECT_EQ(connection.token, "t0k3n");
    EXPECT_EQ(connection.authScheme, "Bearer");
    EXPECT_EQ(connection.serverVersion, "");
}

} // namespace
} // namespace zarn
