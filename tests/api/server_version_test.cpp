// SPDX-License-Identifier: MIT
#include "api/server_version.h"

#include "tests/api/api_fixture.h"

namespace zarn {
namespace {

using Lines = std::vector<std::string>;

TEST(ServerVersion, ReadsNumbersAsTheServerWritesThem)
{
    const struct {
        const char* text;
        std::int64_t number;
    } rows[] = {{"0", 0}, {"7", 7}, {"007", 7}, {"+5", 5}, {"-5", -5}, {"", 0}, {"+", 0}, {"-", 0},
        {"x", 0}, {"1x", 0}, {" 1", 0}, {"1 ", 0}, {"+-1", 0}, {"--1", 0}, {"1.5", 0},
        {"9223372036854775807", 9223372036854775807}, {"9223372036854775808", 0},
        {"99999999999999999999", 0}};
    for (const auto& row : rows)
        EXPECT_EQ(decimalOrZero(row.text), row.number) << row.text;
}

TEST(ServerVersion, SplitsPatchAndBuildAtTheFirstHyphen)
{
    const auto version = ServerVersion::parse("10.35.2-t171-x.9");
    ASSERT_TRUE(version);
    EXPECT_EQ(version->patch, 2);
    EXPECT_EQ(version->build, "t171");
    EXPECT_EQ(ServerVersion::parse("1.2.3")->build, std::nullopt);
    EXPECT_EQ(ServerVersion::parse("1.2.3-")->build, "");
}

TEST(ServerVersion, WantsThreeParts)
{
    EXPECT_FALSE(ServerVersion::parse("10"));
    EXPECT_FALSE(ServerVersion::parse("10.35"));
    EXPECT_TRUE(ServerVersion::parse(".."));
}

class GetVersionTest : public ApiFixture {
protected:
    void getVersion(const Value::Dictionary& reply, bool forceBasic = false)
    {
        connection.authScheme = "Bearer";
        connection.bearerTokenActive = true;
        connection.token = "token";
        delegate->getVersion(
            reply, {forceBasic, "https://zarn.example", "Q3JlZHM=", completion(), 201});
    }
};

TEST_F(GetVersionTest, TheVersionChoosesBetweenBasicAndBearer)
{
    const struct {
        const char* version;
        const char* scheme;
    } rows[] = {{"10.35.0", "Bearer"}, {"10.34.1", "Basic"}, {"11.0.0", "Basic"},
        {"9.99.0", "Basic"}, {"11.2.0", "Basic"}, {"10.36.0", "Bearer"}, {"11.35.0", "Bearer"},
        {"10.35.0-t1", "Bearer"}, {"10.x.0", "Basic"}, {"x.40.0", "Basic"}, {"-10.40.0", "Basic"},
        {"10.-40.0", "Basic"}, {"+10.+35.0", "Bearer"}, {"10.99999999999999999999.0", "Basic"},
        {"10.40.0.1", "Bearer"}};
    for (const auto& row : rows) {
        outcomes.clear();
        getVersion({{"version", row.version}});
        const bool isBearer = std::string_view(row.scheme) == "Bearer";
        EXPECT_EQ(connection.authScheme, row.scheme) << row.version;
        EXPECT_EQ(connection.bearerTokenActive, isBearer) << row.version;
        EXPECT_EQ(connection.token, isBearer ? "token" : "Q3JlZHM=") << row.version;
        EXPECT_EQ(outcomes, (Lines{"200 success"})) << row.version;
    }
}

TEST_F(GetVersionTest, EveryPartOfTheVersionIsKept)
{
    getVersion({{"version", "11.36.7-t1712-x.9"}});
    EXPECT_EQ(connection.serverVersion, "11.36.7-t1712-x.9");
    EXPECT_EQ(connection.versionMajor, 11);
    EXPECT_EQ(connection.versionMinor, 36);
    EXPECT_EQ(connection.versionPatch, 7);
    EXPECT_EQ(connection.versionBuild, "t1712");
}

TEST_F(GetVersionTest, BearerIsChosenWhateverTheSchemeWasBefore)
{
    connection.authScheme = "Basic";
    connection.token = "token";
    delegate->getVersion(
        {{"version", "10.35.0"}}, {false, "https://zarn.example", "Q3JlZHM=", completion(), 200});
    EXPECT_EQ(connection.authScheme, "Bearer");
    EXPECT_TRUE(connection.bearerTokenActive);
    EXPECT_EQ(connection.token, "token");
    EXPECT_EQ(logLines(),
        (Lines{"[TokenDelegate.getVersion] Zarn Pro Version: 10.35.0",
            "[TokenDelegate.getVersion] https://zarn.example set to use Bearer Token"}));
}

TEST_F(GetVersionTest, AProbeThatFailedIsMadeAgainByTheNextToken)
{
    connection.useApiClient = 0;
    sessions.reply(200, R"({"token":"a"})");
    sessions.reply(401, "");
    delegate->getToken("https://zarn.example", "", completion());
    sessions.deliverAll();
    sessions.reply(200, R"({"token":"a"})");
    sessions.reply(200, R"({"version":"10.40.0"})");
    delegate->getToken("https://zarn.example", "", completion());
    sessions.deliverAll();
    EXPECT_EQ(outcomes, (Lines{"200 failed", "200 success"}));
    EXPECT_EQ(sessions.requests.size(), 4U);
}

TEST_F(GetVersionTest, TheLogLineComesBeforeTheAlertAndTheAlertBeforeTheCompletion)
{
    std::vector<std::string> order;
    connection.bearerTokenActive = true;
    alerts.whileOpen = [&] {
        order.push_back("alert after " + std::to_string(logLines().size()));
        EXPECT_FALSE(connection.bearerTokenActive);
    };
    delegate->getVersion({},
        {false, "https://zarn.example", "",
            [&](std::int64_t status, const std::string& result) {
                order.push_back(std::to_string(status) + " " + result);
            },
            299});
    EXPECT_EQ(order, (Lines{"alert after 1", "299 failed"}));
}

TEST_F(GetVersionTest, AVersionWithoutABuildLeavesTheLastBuildText)
{
    getVersion({{"version", "10.35.0-t1"}});
    getVersion({{"version", "10.36.0"}});
    EXPECT_EQ(connection.versionMinor, 36);
    EXPECT_EQ(connection.versionBuild, "t1");
}

// --- Edge cases

class VersionEdgeCases : public GetVersionTest {
protected:
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
