// SPDX-License-Identifier: MIT
// The log line of a step stands at its place among the changes of the connection state.
#include "tests/api/api_fixture.h"
#include "tests/log/watching_clock.h"

#include <iterator>

namespace zarn {
namespace {

using Lines = std::vector<std::string>;

class StateOrderTest : public ApiFixture {
protected:
    void SetUp() override
    {
        connection.useApiClient = 0;
        connection.token = "old";
        connection.base64Creds = "b2xk";
        file.startNewLogFile();
        looks.clear();
    }
    std::string state() const
    {
        return connection.token + " " + connection.base64Creds + " " + connection.authScheme
            + (connection.bearerTokenActive ? " active" : " idle")
            + (connection.tokenCreated ? " dated" : " undated") + " "
            + (connection.serverVersion.empty() ? "-" : connection.serverVersion);
    }
    void validate(int status, const std::string& body)
    {
        sessions.reply(status, body);
        client->getToken(
            "https://zarn.example", "bmV3", [this](std::int64_t, const std::string& result) {
                looks.push_back(result + ": " + state());
            });
        looks.clear();
        sessions.deliverAll();
    }

    Lines looks;
    WatchingClock watching{[this] { looks.push_back(state()); }};
    LogFile file{{files, watching, dates}};
    WriteToLog watchedLog{file};
    std::shared_ptr<TokenDelegate> client
        = std::make_shared<TokenDelegate>(TokenDelegate::Deps{.connection = connection,
            .sessions = sessions,
            .standardDefaults = settings.standard(),
            .texts = texts,
            .clock = clock,
            .log = watchedLog,
            .alerts = alerts,
            .console = console,
            .status = statusLine});
};

TEST_F(StateOrderTest, ATokenIsAdoptedWholeBeforeItIsLoggedAndTheVersionStoredAfterItsLine)
{
    sessions.reply(200, R"({"token":"new"})");
    validate(200, R"({"version":"10.35.0"})");
    EXPECT_EQ(looks,
        (Lines{
            "new bmV3 Bearer active dated -", // new token created
            "new bmV3 Bearer active dated -", // Attempting GET
            "new bmV3 Bearer active dated -", // Zarn Pro Version
            "new bmV3 Bearer active dated 10.35.0", // set to use Bearer Token
            "success: new bmV3 Bearer active dated 10.35.0",
        }));
}

TEST_F(StateOrderTest, BasicIsSetWholeBeforeItIsLogged)
{
    sessions.reply(200, R"({"token":"new"})");
    validate(200, R"({"version":"10.34.0"})");
    ASSERT_EQ(looks.size(), 5U);
    EXPECT_EQ(looks[2], "new bmV3 Bearer active dated -"); // Zarn Pro Version
    EXPECT_EQ(looks[3], "bmV3 bmV3 Basic idle dated 10.34.0"); // set to use Basic Authentication
    EXPECT_EQ(looks[4], "success: bmV3 bmV3 Basic idle dated 10.34.0");
}

TEST_F(StateOrderTest, AFailedProbeIsLoggedBeforeTheTokenIsNoLongerActive)
{
    sessions.reply(200, R"({"token":"new"})");
    validate(404, "");
    EXPECT_EQ(Lines(std::prev(looks.end(), 2), looks.end()),
        (Lines{
            "new bmV3 Bearer active dated -", // failed to get version information
            "failed: new bmV3 Bearer idle dated -",
        }));
}

TEST_F(StateOrderTest, AFailureIsInTheStateBeforeItIsTold)
{
    for (const auto& [status, result] : {std::pair(401, "failedToAuthenticate"),
             std::pair(0, "failedToConnect"), std::pair(200, "failed")}) {
        connection.bearerTokenActive = true;
        if (status == 0) {
            sessions.replyNothing();
            client->getToken(
                "https://zarn.example", "bmV3", [this](std::int64_t, const std::string& word) {
                    looks.push_back(word + ": " + state());
                });
            sessions.deliverAll();
        } else {
            validate(status, "no JSON");
        }
        ASSERT_FALSE(looks.empty());
        EXPECT_EQ(looks.back(), std::string(result) + ": old b2xk Basic idle undated -");
    }
    ASSERT_EQ(looks.size(), 2U);
    EXPECT_EQ(looks.front(), "old b2xk Basic active undated -"); // JSON error
}

} // namespace
} // namespace zarn
