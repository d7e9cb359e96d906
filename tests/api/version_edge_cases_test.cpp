// SPDX-License-Identifier: MIT
#include "tests/api/api_fixture.h"

namespace zarn {
namespace {

using Lines = std::vector<std::string>;

class VersionEdgeCases : public ApiFixture {
protected:
    void getVersion(const Value::Dictionary& reply, bool forceBasic = false)
    {
        connection.authScheme = "Bearer";
        connection.bearerTokenActive = true;
        connection.token = "token";
        delegate->getVersion(
            reply, {forceBasic, "https://zarn.example", "Q3JlZHM=", completion(), 201});
    }
    void expectScheme(const char* version, const char* scheme)
    {
        outcomes.clear();
        getVersion({{"version", version}});
        EXPECT_EQ(connection.authScheme, scheme) << version;
        EXPECT_EQ(outcomes, (Lines{"200 success"})) << version;
    }
};

TEST_F(VersionEdgeCases, Version10_35_0SelectsBearer)
{
    expectScheme("10.35.0", "Bearer");
}

TEST_F(VersionEdgeCases, Version10_34_1SelectsBasic)
{
    expectScheme("10.34.1", "Basic");
}

TEST_F(VersionEdgeCases, Version11_0_0SelectsBasic)
{
    expectScheme("11.0.0", "Basic");
}

TEST_F(VersionEdgeCases, Version9_99_0SelectsBasic)
{
    expectScheme("9.99.0", "Basic");
}

TEST_F(VersionEdgeCases, Version10_35_0WithABuildTextSelectsBearerAndKeepsTheBuild)
{
    getVersion({{"version", "10.35.0-t1712345"}});
    EXPECT_EQ(connection.authScheme, "Bearer");
    EXPECT_EQ(connection.serverVersion, "10.35.0-t1712345");
    EXPECT_EQ(connection.versionMajor, 10);
    EXPECT_EQ(connection.versionMinor, 35);
    EXPECT_EQ(connection.versionPatch, 0);
    EXPECT_EQ(connection.versionBuild, "t1712345");
    EXPECT_EQ(outcomes, (Lines{"200 success"}));
}

TEST_F(VersionEdgeCases, ForcedBasicAuthenticationWithVersion10_40_0SelectsBasic)
{
    getVersion({{"version", "10.40.0"}}, true);
    EXPECT_EQ(connection.authScheme, "Basic");
    EXPECT_EQ(connection.token, "Q3JlZHM=");
    EXPECT_EQ(logLines(),
        (Lines{"[TokenDelegate.getVersion] Zarn Pro Version: 10.40.0",
            "[TokenDelegate.getVersion] https://zarn.example set to use Basic Authentication"}));
}

TEST_F(VersionEdgeCases, AReplyWithoutAVersionIsLoggedShownAndFails)
{
    for (const Value::Dictionary& reply : {Value::Dictionary{}, Value::Dictionary{{"version", 10}},
             Value::Dictionary{{"ZPAPI_result", "failed"}, {"ZPAPI_response", 401}}}) {
        outcomes.clear();
        alerts.shown.clear();
        files.files.clear();
        getVersion(reply);
        EXPECT_EQ(alerts.shown,
            (Lines{"Attention|Failed to get version information from https://zarn.example|"}));
        EXPECT_EQ(outcomes, (Lines{"201 failed"}));
        EXPECT_EQ(logLines(),
            (Lines{"[TokenDelegate.getToken] failed to get version information from "
                   "https://zarn.example"}));
        EXPECT_FALSE(connection.bearerTokenActive);
        EXPECT_EQ(connection.authScheme, "Bearer");
        EXPECT_EQ(connection.token, "token");
        EXPECT_EQ(connection.serverVersion, "");
    }
}

TEST_F(VersionEdgeCases, AnUnauthorizedProbeIsLoggedShownAndFailsWithTheStatusOfTheTokenReply)
{
    sessions.reply(201, R"({"access_token":"abc"})");
    sessions.reply(401, "");
    delegate->getToken("https://zarn.example", "Q3JlZHM=", completion());
    sessions.deliverAll();
    const auto lines = logLines();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[lines.size() - 2], "[TokenDelegate.getVersion] Response error: 401.");
    EXPECT_EQ(lines.back(),
        "[TokenDelegate.getToken] failed to get version information from https://zarn.example");
    EXPECT_EQ(alerts.shown,
        (Lines{"Attention|Failed to get version information from https://zarn.example|"}));
    EXPECT_EQ(outcomes, (Lines{"201 failed"}));
    EXPECT_EQ(connection.token, "abc");
    EXPECT_EQ(connection.authScheme, "Bearer");
    EXPECT_FALSE(connection.bearerTokenActive);
}

TEST_F(VersionEdgeCases, AnEmptyVersionCallsNoCompletionAtAll)
{
    getVersion({{"version", ""}});
    EXPECT_TRUE(outcomes.empty());
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_TRUE(logLines().empty());
    EXPECT_EQ(connection.serverVersion, "");
}

TEST_F(VersionEdgeCases, AVersionOfTwoPartsIsStoredAndCallsNoCompletionAtAll)
{
    getVersion({{"version", "10.35"}});
    EXPECT_TRUE(outcomes.empty());
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_EQ(logLines(), (Lines{"[TokenDelegate.getVersion] Zarn Pro Version: 10.35"}));
    EXPECT_EQ(connection.serverVersion, "10.35");
    EXPECT_EQ(connection.authScheme, "Bearer");
    EXPECT_EQ(connection.versionMajor, 0);
}

TEST_F(VersionEdgeCases, APartThatIsNoNumberReadsAsZeroAndSelectsBasic)
{
    expectScheme("10.x.0", "Basic");
    EXPECT_EQ(connection.versionMajor, 10);
    EXPECT_EQ(connection.versionMinor, 0);
}

} // namespace
} // namespace zarn
