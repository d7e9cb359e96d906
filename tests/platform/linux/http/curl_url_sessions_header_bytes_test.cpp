// SPDX-License-Identifier: MIT
// Every byte at the start, in the middle and at the end of every field that reaches a request: what
// is on the wire is the expected set of headers, or nothing.
#include "platform/linux/http/http_rules.h"
#include "tests/platform/linux/http/http_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

namespace zarn::linux_backend {
namespace {

using demo::Reply;
using demo::Request;

std::vector<std::string> withByte(int byte)
{
    const std::string inserted(1, static_cast<char>(byte));
    return {inserted + "abcd", "ab" + inserted + "cd", "abcd" + inserted};
}

class HttpHeaderBytes : public testing::Test {
protected:
    HttpHeaderBytes()
        : host(server.http().substr(7))
    {
    }

    void TearDown() override
    {
        std::printf("Header bytes, %s: %d tries, %zu of them sent\n",
            testing::UnitTest::GetInstance()->current_test_info()->name(), tries, m_seen);
    }

    // The one request that was sent since the last call, or nothing.
    std::optional<Request> sent()
    {
        const auto requests = server.requests();
        EXPECT_LE(requests.size(), m_seen + 1);
        if (requests.size() <= m_seen)
            return std::nullopt;
        m_seen = requests.size();
        return requests.back();
    }

    // Lines end in CR LF and hold neither of them, nor a NUL, anywhere else.
    static void expectCleanHead(const Request& request)
    {
        const std::string head = request.raw.substr(0, request.raw.find("\r\n\r\n") + 4);
        const auto breaks = std::count(head.begin(), head.end(), '\n');
        EXPECT_EQ(std::count(head.begin(), head.end(), '\r'), breaks);
        EXPECT_EQ(static_cast<std::size_t>(breaks), request.headers.size() + 2);
        EXPECT_EQ(head.find('\0'), std::string::npos);
    }

    Url url(const std::string& path = "/api") const { return *Url::fromText(server.http() + path); }

    HttpClient client;
    LoopbackServer server{[](const Request&) { return Reply{}; }};
    const std::string host;
    int tries = 0;

private:
    std::size_t m_seen = 0;
};

TEST_F(HttpHeaderBytes, InAHeaderValue)
{
    for (int byte = 0; byte < 256; ++byte) {
        const bool safe = byte == '\t' || (byte >= 0x20 && byte != 0x7f);
        for (const auto& text : withByte(byte)) {
            for (const std::string& prefix : {std::string(), std::string("Bearer ")}) {
                SCOPED_TRACE(std::to_string(byte) + " in " + prefix + "value");
                ++tries;
                const HttpHeaders headers = {{"Authorization", prefix + text},
                    {"Content-Type", "application/json"}, {"Accept", "application/json"}};
                EXPECT_EQ(client.send({url()}, headers).has_value(), safe);
                const auto request = sent();
                ASSERT_EQ(request.has_value(), safe);
                if (!request)
                    continue;
                const demo::Headers expected = {{"Host", host},
                    {"Authorization", std::string(withoutOuterBlanks(prefix + text))}, headers[1],
                    headers[2]};
                EXPECT_EQ(request->headers, expected);
                expectCleanHead(*request);
            }
        }
    }
}

TEST_F(HttpHeaderBytes, InAHeaderName)
{
    const std::string marks = "!#$%&'*+-.^_`|~";
    for (int byte = 0; byte < 256; ++byte) {
        const bool letterOrDigit = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z')
            || (byte >= 'a' && byte <= 'z');
        const bool safe = letterOrDigit
            || (byte != 0 && marks.find(static_cast<char>(byte)) != std::string::npos);
        for (const auto& text : withByte(byte)) {
            SCOPED_TRACE(byte);
            ++tries;
            EXPECT_EQ(client.send({url()}, {{text, "x"}}).has_value(), safe);
            const auto request = sent();
            ASSERT_EQ(request.has_value(), safe);
            if (!request)
                continue;
            EXPECT_EQ(request->headers, (demo::Headers{{"Host", host}, {text, "x"}}));
            expectCleanHead(*request);
        }
    }
}

TEST_F(HttpHeaderBytes, InTheMethod)
{
    const std::string marks = "!#$%&'*+-.^_`|~";
    for (int byte = 0; byte < 256; ++byte) {
        const bool letterOrDigit = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z')
            || (byte >= 'a' && byte <= 'z');
        const bool safe = letterOrDigit
            || (byte != 0 && marks.find(static_cast<char>(byte)) != std::string::npos);
        for (const auto& text : withByte(byte)) {
            SCOPED_TRACE(byte);
            ++tries;
            EXPECT_EQ(client.send({url(), text}).has_value(), safe);
            const auto request = sent();
            ASSERT_EQ(request.has_value(), safe);
            if (!request)
                continue;
            EXPECT_EQ(request->method, text);
            EXPECT_EQ(request->headers, (demo::Headers{{"Host", host}}));
            expectCleanHead(*request);
        }
    }
}

TEST_F(HttpHeaderBytes, InAPathOrQuery)
{
    for (int byte = 0; byte < 256; ++byte) {
        for (const auto& text : withByte(byte)) {
            for (const std::string& start : {std::string("/"), std::string("/a?")}) {
                SCOPED_TRACE(std::to_string(byte) + " after " + start);
                ++tries;
                const auto formed = Url::fromText(server.http() + start + text);
                if (!formed)
                    continue;
                EXPECT_TRUE(client.send({*formed}));
                const auto request = sent();
                ASSERT_TRUE(request);
                const std::string whole = start + text;
                EXPECT_EQ(request->target, whole.substr(0, whole.find('#')));
                EXPECT_EQ(request->headers, (demo::Headers{{"Host", host}}));
                expectCleanHead(*request);
            }
        }
    }
}

// Whatever a byte does to the host, no header comes of it but a Host of plain characters.
TEST_F(HttpHeaderBytes, InTheServersAddress)
{
    const std::string text = server.http();
    for (int byte = 0; byte < 256; ++byte) {
        const std::string inserted(1, static_cast<char>(byte));
        for (const std::size_t at : {std::size_t{0}, std::size_t{5}, std::size_t{7},
                 std::size_t{10}, std::size_t{16}, text.size()}) {
            SCOPED_TRACE(std::to_string(byte) + " at " + std::to_string(at));
            ++tries;
            const auto formed
                = Url::fromText(std::string(text).insert(at, inserted) + "/api/v1/auth/token");
            if (!formed)
                continue;
            client.send({*formed, "POST"}, {{"Authorization", "Basic eDp5"}});
            const auto request = sent();
            if (!request)
                continue;
            ASSERT_EQ(request->headers.size(), 3U);
            EXPECT_EQ(request->headers[0].first, "Host");
            EXPECT_EQ(
                request->headers[0].second.find_first_not_of("0123456789.:"), std::string::npos);
            EXPECT_EQ(
                request->headers[1], (demo::Headers::value_type{"Authorization", "Basic eDp5"}));
            EXPECT_EQ(request->headers[2], (demo::Headers::value_type{"Content-Length", "0"}));
            expectCleanHead(*request);
        }
    }
}

TEST_F(HttpHeaderBytes, InABody)
{
    for (int byte = 0; byte < 256; ++byte) {
        for (const auto& text : withByte(byte)) {
            SCOPED_TRACE(byte);
            ++tries;
            const std::string body = "client_id=x&client_secret=" + text;
            EXPECT_TRUE(client.send({url(), "POST", body}));
            const auto request = sent();
            ASSERT_TRUE(request);
            EXPECT_EQ(request->body, body);
            EXPECT_EQ(request->headers,
                (demo::Headers{{"Host", host}, {"Content-Length", std::to_string(body.size())}}));
            expectCleanHead(*request);
        }
    }
}

} // namespace
} // namespace zarn::linux_backend
