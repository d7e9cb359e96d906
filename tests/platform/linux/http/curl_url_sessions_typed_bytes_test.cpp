// SPDX-License-Identifier: MIT
// Every byte at the start, in the middle and at the end of everything that a person types and a
// server answers and that goes into a request: what is on the wire is the expected set of headers,
// or nothing.
#include "base/base64.h"
#include "tests/api/api_fixture.h"
#include "tests/platform/linux/http/http_fixture.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>

namespace zarn::linux_backend {
namespace {

using demo::Headers;
using demo::Reply;
using demo::Request;

constexpr const char* userAgent = "zarn%2Dactions/1.4.2";

/// A text with the byte at its start, in its middle and at its end.
std::array<std::string, 3> around(const std::string& inserted)
{
    return {inserted + "abcd", "ab" + inserted + "cd", "abcd" + inserted};
}

std::array<std::string, 3> withByte(int byte)
{
    return around(std::string(1, static_cast<char>(byte)));
}

/// The server client over real HTTP.
class TypedBytes : public ApiFixture {
protected:
    TypedBytes() { connection.serverVersion = "11.0.0"; }

    Reply answer(const Request& request) const
    {
        Reply reply;
        reply.body = request.path().ends_with("/zarn-pro-version")
            ? R"({"version":"11.40.0"})"
            : R"({"token":")" + token + R"(","access_token":")" + token + R"("})";
        return reply;
    }

    /// The outcome of one validation, and what came to the server meanwhile.
    std::vector<Request> validate(const std::string& serverUrl)
    {
        outcomes.clear();
        const auto before = server.requests().size();
        underTest->getToken(serverUrl,
            base64Encoded(connection.username + ":" + connection.password), completion());
        EXPECT_TRUE(
            client.queue.runUntil([&] { return !outcomes.empty(); }, std::chrono::seconds(60)));
        auto requests = server.requests();
        requests.erase(requests.begin(), requests.begin() + static_cast<std::ptrdiff_t>(before));
        validations += 1;
        return requests;
    }

    void TearDown() override
    {
        std::printf("Typed bytes, %s: %d validations, %zu requests\n",
            testing::UnitTest::GetInstance()->current_test_info()->name(), validations,
            server.traffic().requests);
    }

    // Lines end in CR LF and hold neither of them, nor a NUL, anywhere else.
    static void expectCleanHead(const Request& request)
    {
        const auto head = request.raw.substr(0, request.raw.find("\r\n\r\n") + 4);
        const auto breaks = std::count(head.begin(), head.end(), '\n');
        EXPECT_EQ(std::count(head.begin(), head.end(), '\r'), breaks);
        EXPECT_EQ(static_cast<std::size_t>(breaks), request.headers.size() + 2);
        EXPECT_EQ(head.find('\0'), std::string::npos);
    }

    Headers basicHeaders() const
    {
        return {{"Host", host},
            {"Authorization",
                "Basic " + base64Encoded(connection.username + ":" + connection.password)},
            {"Content-Type", "application/json"}, {"Accept", "application/json"},
            {"User-Agent", userAgent}, {"Content-Length", "0"}};
    }
    Headers formHeaders(const std::string& body) const
    {
        return {{"Host", host}, {"Content-Type", "application/x-www-form-urlencoded"},
            {"Accept", "application/json"}, {"User-Agent", userAgent},
            {"Content-Length", std::to_string(body.size())}};
    }

    std::string token = "t0k3n";
    HttpClient client;
    LoopbackServer server{[this](const Request& request) { return answer(request); }};
    const std::string host = server.http().substr(7);
    std::shared_ptr<TokenDelegate> underTest
        = std::make_shared<TokenDelegate>(TokenDelegate::Deps{.connection = connection,
            .sessions = *client.sessions,
            .standardDefaults = settings.standard(),
            .texts = texts,
            .clock = clock,
            .log = log,
            .alerts = alerts,
            .console = console,
            .status = statusLine});
    int validations = 0;
};

TEST_F(TypedBytes, InTheUserNameAndThePassword)
{
    connection.useApiClient = 0;
    for (auto* field : {&connection.username, &connection.password}) {
        for (int byte = 0; byte < 256; ++byte) {
            for (const auto& text : withByte(byte)) {
                SCOPED_TRACE(std::to_string(byte) + " in " + text);
                connection.username = connection.password = "plain";
                *field = text;
                const auto requests = validate(server.http());
                ASSERT_EQ(requests.size(), 1U);
                EXPECT_EQ(requests[0].headers, basicHeaders());
                EXPECT_EQ(requests[0].body, "");
                expectCleanHead(requests[0]);
                EXPECT_EQ(outcomes, std::vector<std::string>{"200 success"});
            }
        }
    }
    EXPECT_EQ(validations, 2 * 256 * 3);
}

TEST_F(TypedBytes, InTheClientIdAndTheClientSecret)
{
    for (auto* field : {&connection.username, &connection.password}) {
        for (int byte = 0; byte < 256; ++byte) {
            for (const auto& text : withByte(byte)) {
                SCOPED_TRACE(std::to_string(byte) + " in " + text);
                connection.username = connection.password = "plain";
                *field = text;
                const auto requests = validate(server.http());
                ASSERT_EQ(requests.size(), 1U);
                const auto body = "grant_type=client_credentials&client_id=" + connection.username
                    + "&client_secret=" + connection.password;
                EXPECT_EQ(requests[0].headers, formHeaders(body));
                EXPECT_EQ(requests[0].body, body);
                expectCleanHead(requests[0]);
                EXPECT_EQ(outcomes, std::vector<std::string>{"200 success"});
            }
        }
    }
    EXPECT_EQ(validations, 2 * 256 * 3);
}

TEST_F(TypedBytes, InTheServersAddress)
{
    connection.useApiClient = 0;
    connection.username = connection.password = "plain";
    int sent = 0;
    for (int byte = 0; byte < 256; ++byte) {
        const std::string inserted(1, static_cast<char>(byte));
        for (const auto& address : {inserted + server.http() + "/base",
                 server.http() + "/ba" + inserted + "se", server.http() + "/base" + inserted}) {
            SCOPED_TRACE(byte);
            const auto requests = validate(address);
            ASSERT_LE(requests.size(), 1U);
            ASSERT_EQ(outcomes.size(), 1U);
            if (requests.empty()) {
                EXPECT_TRUE(outcomes[0] == "500 failed" || outcomes[0] == "0 failedToConnect")
                    << outcomes[0];
                continue;
            }
            ++sent;
            EXPECT_EQ(requests[0].headers, basicHeaders());
            expectCleanHead(requests[0]);
        }
    }
    EXPECT_EQ(validations, 256 * 3);
    // Every byte that an address may hold was sent in the path, twice.
    EXPECT_GE(sent, 2 * 80);
}

// A server chooses its token; what it holds must not become a header of the next request.
TEST_F(TypedBytes, InTheTokenOfTheServer)
{
    connection.useApiClient = 0;
    for (int byte = 0; byte < 256; ++byte) {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(byte));
        const bool travels = byte == '\t' || (byte >= 0x20 && byte != 0x7f);
        for (const auto& text : around(escape)) {
            SCOPED_TRACE(text);
            token = text;
            connection.serverVersion.clear();
            alerts.shown.clear();
            const auto requests = validate(server.http());
            ASSERT_EQ(requests.size(), travels ? 2U : 1U);
            EXPECT_EQ(alerts.shown.size(), travels ? 0U : 1U);
            EXPECT_EQ(outcomes, std::vector<std::string>{travels ? "200 success" : "200 failed"});
            if (!travels)
                continue;
            const auto& probe = requests[1];
            ASSERT_EQ(probe.headers.size(), 5U);
            EXPECT_EQ(probe.headers[0], (Headers::value_type{"Host", host}));
            EXPECT_EQ(probe.headers[1].first, "Authorization");
            EXPECT_TRUE(probe.headers[1].second.starts_with("Bearer "));
            EXPECT_EQ(probe.headers[2], (Headers::value_type{"Content-Type", "application/json"}));
            EXPECT_EQ(probe.headers[3], (Headers::value_type{"Accept", "application/json"}));
            EXPECT_EQ(probe.headers[4], (Headers::value_type{"User-Agent", userAgent}));
            expectCleanHead(probe);
        }
    }
    EXPECT_EQ(validations, 256 * 3);
}

} // namespace
} // namespace zarn::linux_backend
