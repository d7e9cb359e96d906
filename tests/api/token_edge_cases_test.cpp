// SPDX-License-Identifier: MIT
#include "tests/api/api_fixture.h"

namespace zarn {
namespace {

using Lines = std::vector<std::string>;

class TokenEdgeCases : public ApiFixture {
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
};

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

} // namespace
} // namespace zarn
