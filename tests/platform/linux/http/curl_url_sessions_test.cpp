// SPDX-License-Identifier: MIT
#include "tests/platform/linux/http/http_fixture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>

#include <unistd.h>

namespace zarn::linux_backend {
namespace {

using namespace std::chrono_literals;
using demo::Reply;
using demo::Request;

Reply withBody(std::string body)
{
    Reply reply;
    reply.body = std::move(body);
    return reply;
}

Reply withRaw(std::string raw)
{
    Reply reply;
    reply.raw = std::move(raw);
    return reply;
}

// Answers each path with its own reply; 404 for any other.
demo::Handler routes(std::map<std::string, Reply> table)
{
    return [table = std::move(table)](const Request& request) {
        const auto found = table.find(request.path());
        Reply missing;
        missing.status = 404;
        return found == table.end() ? missing : found->second;
    };
}

Reply redirectTo(const std::string& location, int status = 302)
{
    Reply reply;
    reply.status = status;
    reply.headers = {{"Location", location}};
    reply.body = "redirecting";
    return reply;
}

TEST(HttpSession, OnlyTheSessionsHeadersHostAndLengthAreOnTheWire)
{
    LoopbackServer server([](const Request&) { return Reply{}; });
    HttpClient client;
    const std::string host = server.https().substr(8);
    const HttpHeaders headers
        = {{"Authorization", "Basic eDp5"}, {"Content-Type", "application/json"},
            {"Accept", "application/json"}, {"User-Agent", "Zarn%20Actions/1.0"}};
    ASSERT_TRUE(client.send({*Url::fromText(server.https() + "/a"), "POST"}, headers));
    ASSERT_TRUE(client.send({*Url::fromText(server.https() + "/b"), "POST", "x=y"}));
    ASSERT_TRUE(client.get(server.https() + "/c"));
    ASSERT_TRUE(client.send({*Url::fromText(server.https() + "/d"), "PUT"}));
    ASSERT_TRUE(client.send({*Url::fromText(server.https() + "/e"), "GET", "{}"}));
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 5U);
    EXPECT_EQ(requests[0].raw,
        "POST /a HTTP/1.1\r\nHost: " + host
            + "\r\nAuthorization: Basic eDp5\r\nContent-Type: application/json\r\n"
              "Accept: application/json\r\nUser-Agent: Zarn%20Actions/1.0\r\n"
              "Content-Length: 0\r\n\r\n");
    EXPECT_EQ(
        requests[1].raw, "POST /b HTTP/1.1\r\nHost: " + host + "\r\nContent-Length: 3\r\n\r\nx=y");
    EXPECT_EQ(requests[2].raw, "GET /c HTTP/1.1\r\nHost: " + host + "\r\n\r\n");
    EXPECT_EQ(
        requests[3].raw, "PUT /d HTTP/1.1\r\nHost: " + host + "\r\nContent-Length: 0\r\n\r\n");
    EXPECT_EQ(
        requests[4].raw, "GET /e HTTP/1.1\r\nHost: " + host + "\r\nContent-Length: 2\r\n\r\n{}");
}

TEST(HttpSession, AHeaderWithoutAValueIsSentAndOuterBlanksAreNot)
{
    LoopbackServer server([](const Request&) { return Reply{}; });
    HttpClient client;
    ASSERT_TRUE(client.get(server.https(),
        {{"X-Empty", ""}, {"X-Blank", " \t "}, {"Accept", ""}, {"X-Outer", "  a b\t"},
            {"X-Twice", "1"}, {"X-Twice", "2"}}));
    ASSERT_EQ(server.requests().size(), 1U);
    const demo::Headers expected = {{"Host", server.https().substr(8)}, {"X-Empty", ""},
        {"X-Blank", ""}, {"Accept", ""}, {"X-Outer", "a b"}, {"X-Twice", "1"}, {"X-Twice", "2"}};
    EXPECT_EQ(server.requests()[0].headers, expected);
}

TEST(HttpSession, ALargeBodyIsSentWithoutAskingFirst)
{
    LoopbackServer server([](const Request&) { return Reply{}; });
    HttpClient client;
    const std::string body(3'000'000, 'x');
    ASSERT_TRUE(client.send({*Url::fromText(server.https()), "PUT", body}));
    ASSERT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(server.requests()[0].body, body);
    EXPECT_EQ(server.requests()[0].header("Expect"), "");
}

TEST(HttpSession, TlsIsNewAndEveryConnectionItsOwn)
{
    LoopbackServer server([](const Request&) { return Reply{}; });
    HttpClient client;
    ASSERT_TRUE(client.get(server.https("localhost")));
    ASSERT_TRUE(client.get(server.https("localhost")));
    EXPECT_EQ(server.traffic().connections, 2U);
    EXPECT_EQ(server.requests()[0].tlsVersion, "TLSv1.3");
    EXPECT_EQ(server.requests()[0].serverName, "localhost");
}

TEST(HttpSession, IpAddressesAndNamesOfThisComputerWork)
{
    LoopbackServer server([](const Request&) { return Reply{}; });
    HttpClient client;
    for (const char* host : {"127.0.0.1", "localhost", "[::1]"}) {
        EXPECT_TRUE(client.get(server.https(host))) << host;
        EXPECT_TRUE(client.get(server.http(host))) << host;
    }
    EXPECT_EQ(server.requests().back().header("Host"), server.http("[::1]").substr(7));
}

TEST(HttpSession, HttpElsewhereEndsWithoutAResponseAndOneLineSaysWhy)
{
    HttpClient client;
    for (const char* url : {"http://zarn.example/api?client_secret=x", "http://10.0.0.1:8080/",
             "http://localhost./", "http://127.0.0.1.example/"}) {
        client.complaints.clear();
        EXPECT_FALSE(client.get(url)) << url;
        ASSERT_EQ(client.complaints.size(), 1U) << url;
    }
    client.complaints.clear();
    EXPECT_FALSE(client.get("http://Zarn.Example:8080/api?client_secret=x"));
    EXPECT_EQ(client.complaints.at(0),
        "nothing was sent to http://zarn.example:8080: http is allowed to this computer only, use "
        "https");
}

TEST(HttpSession, WhatIsNoHttpAddressEndsWithoutAResponse)
{
    LoopbackServer server([](const Request&) { return Reply{}; });
    HttpClient client;
    const std::string port = server.http().substr(17);
    for (const std::string& url :
        {"127.0.0.1:" + port, "http:/127.0.0.1:" + port, "http:127.0.0.1:" + port,
            "//127.0.0.1:" + port, "http://0x7f.1:" + port, "http://127.1:" + port,
            "http://2130706433:" + port, "http://user:pw@127.0.0.1:" + port,
            "ftp://127.0.0.1:" + port, "gopher://127.0.0.1:" + port, std::string("https://"),
            std::string("https://127.0.0.1:99999"), std::string("file:///etc/hostname")})
        EXPECT_FALSE(client.get(url)) << url;
    EXPECT_EQ(server.traffic().connections, 0U);
    EXPECT_TRUE(client.complaints.empty());
}

TEST(HttpSession, NoServerNoNameNoReplyIsNoResponse)
{
    HttpClient client;
    std::string closed;
    {
        LoopbackServer server([](const Request&) { return Reply{}; });
        closed = server.https();
    }
    EXPECT_FALSE(client.get(closed));
    EXPECT_FALSE(client.get("https://zarn.invalid/"));
}

TEST(HttpSession, APathBeyondAsciiIsPercentEncodedAndOneWithDotsSentAsItIs)
{
    LoopbackServer server([](const Request&) { return Reply{}; });
    HttpClient client;
    ASSERT_TRUE(client.get(server.https() + "/\xC3\xBC?\xE2\x82\xAC#\xC3\xBC"));
    ASSERT_TRUE(client.get(server.https() + "/a/../b/./c%2e"));
    EXPECT_EQ(server.requests()[0].target, "/%C3%BC?%E2%82%AC");
    EXPECT_EQ(server.requests()[1].target, "/a/../b/./c%2e");
}

TEST(HttpSession, RepliesThatAreNoHttpAreNoResponse)
{
    std::map<std::string, Reply> table;
    const std::vector<std::string> raw = {"", "\r\n\r\n", "hello", "hello\r\n\r\n", "<html></html>",
        "HTTP/1.1\r\n\r\n", "HTTP/1.1 \r\n\r\n", "HTTP/1.1 20\r\n\r\n", "HTTP/1.1 2000 OK\r\n\r\n",
        "HTTP/1.1 abc OK\r\n\r\n", "HTTP/9.9 200 OK\r\n\r\n", "HTTP/1.2 200 OK\r\n\r\n",
        "HTTP/2 200 OK\r\n\r\n", "ICY 200 OK\r\n\r\n", "RTSP/1.0 200 OK\r\n\r\n",
        "HTTP/1.1 099 OK\r\n\r\n", "HTTP/1.1 200 OK", "HTTP/1.1 200 OK\r\n",
        "HTTP/1.1 200 OK\r\nA: b", "HTTP/1.1 100 Continue\r\n\r\n",
        "HTTP/1.1 101 Switching Protocols\r\nUpgrade: x\r\n\r\nbody",
        "HTTP/1.1 103 Early\r\n\r\nHTTP/1.1 101 x\r\n\r\nHTTP/1.1 200 OK\r\n\r\n",
        "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nabc",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nabc",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nabc\r\n0\r\n\r\n",
        "HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\n"};
    for (std::size_t i = 0; i < raw.size(); ++i)
        table["/" + std::to_string(i)] = withRaw(raw[i]);
    LoopbackServer server(routes(table));
    HttpClient client;
    for (std::size_t i = 0; i < raw.size(); ++i) {
        const auto response = client.get(server.https() + "/" + std::to_string(i));
        EXPECT_FALSE(response) << raw[i] << " gave " << (response ? response->status : 0);
    }
}

TEST(HttpSession, OddRepliesThatAreHttpAreResponses)
{
    struct Case {
        const char* raw;
        int status;
        const char* body;
    };
    const Case cases[] = {{"HTTP/1.1 200\r\nContent-Length: 2\r\n\r\nok", 200, "ok"},
        {"HTTP/1.0 200 OK\r\n\r\nto the end", 200, "to the end"},
        {"HTTP/1.1 200 OK\nContent-Length: 2\n\nok", 200, "ok"},
        {"HTTP/1.1 401 \r\nContent-Length: 0\r\n\r\n", 401, ""},
        {"HTTP/1.1 999 Odd\r\nContent-Length: 0\r\n\r\n", 999, ""},
        {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n"
         "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok",
            200, "ok"},
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nok\r\n0\r\nTrailer: x\r\n\r\n",
            200, "ok"},
        {"HTTP/1.1 204 No Content\r\n\r\n", 204, ""},
        {"HTTP/1.1 304 Not Modified\r\nContent-Length: 10\r\n\r\n", 304, ""},
        {"HTTP/1.1 200 OK\r\nSet-Cookie: a=b\r\nContent-Length: 2\r\n\r\nokrest", 200, "ok"}};
    std::map<std::string, Reply> table;
    for (std::size_t i = 0; i < std::size(cases); ++i)
        table["/" + std::to_string(i)] = withRaw(cases[i].raw);
    LoopbackServer server(routes(table));
    HttpClient client;
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const auto response = client.get(server.https() + "/" + std::to_string(i));
        ASSERT_TRUE(response) << cases[i].raw;
        EXPECT_EQ(response->status, cases[i].status) << cases[i].raw;
        EXPECT_EQ(response->body, cases[i].body) << cases[i].raw;
    }
}

TEST(HttpSession, TrailersDoNotRedirect)
{
    LoopbackServer server(routes({{"/",
        withRaw("HTTP/1.1 302 Found\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nok\r\n0\r\n"
                "Location: /other\r\n\r\n")}}));
    HttpClient client;
    const auto response = client.get(server.https());
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 302);
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST(HttpSession, ABodyEndsAtSixteenMebibytes)
{
    Reply exact = withBody(std::string(1024, 'x'));
    exact.repeat = 16384;
    Reply over = exact;
    over.bodyEnd = "x";
    Reply endless = withBody("x");
    endless.endless = true;
    LoopbackServer server(routes({{"/exact", exact}, {"/over", over}, {"/endless", endless}}));
    HttpClient client;
    const auto response = client.get(server.https() + "/exact");
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body.size(), std::size_t{16} << 20U);
    EXPECT_FALSE(client.get(server.https() + "/over"));
    EXPECT_FALSE(client.get(server.https() + "/endless"));
}

TEST(HttpSession, RedirectsWithinTheOriginAreFollowedWithCredentials)
{
    LoopbackServer server(routes({{"/a", redirectTo("/b?x=1", 307)}, {"/b", withBody("here")}}));
    HttpClient client;
    const HttpHeaders headers = {{"Authorization", "Basic eDp5"}};
    const auto response
        = client.send({*Url::fromText(server.https() + "/a"), "POST", "form=1"}, headers);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "here");
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[1].method, "POST");
    EXPECT_EQ(requests[1].target, "/b?x=1");
    EXPECT_EQ(requests[1].body, "form=1");
    EXPECT_EQ(requests[1].header("Authorization"), "Basic eDp5");
}

TEST(HttpSession, ARedirectThatTurnsPostIntoGetLeavesTheBodyAndKeepsTheHeaders)
{
    LoopbackServer server(routes({{"/a", redirectTo("b", 302)}, {"/b", withBody("here")}}));
    HttpClient client;
    const HttpHeaders headers
        = {{"Content-Type", "application/x-www-form-urlencoded"}, {"Accept", "application/json"}};
    ASSERT_TRUE(client.send({*Url::fromText(server.https() + "/a"), "POST", "form=1"}, headers));
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[1].raw,
        "GET /b HTTP/1.1\r\nHost: " + server.https().substr(8)
            + "\r\nContent-Type: application/x-www-form-urlencoded\r\n"
              "Accept: application/json\r\n\r\n");
}

TEST(HttpSession, SixteenRedirectsAreFollowedAndTheSeventeenthIsTheResponse)
{
    LoopbackServer server([](const Request& request) {
        return redirectTo("/" + std::to_string(std::stoi(request.target.substr(1)) + 1));
    });
    HttpClient client;
    const auto response = client.get(server.https() + "/0");
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 302);
    EXPECT_EQ(response->body, "redirecting");
    EXPECT_EQ(server.requests().size(), 17U);
    EXPECT_EQ(server.requests().back().target, "/16");
}

TEST(HttpSession, SixteenRedirectsMayLeadToAReply)
{
    LoopbackServer server([](const Request& request) {
        const int number = std::stoi(request.target.substr(1));
        return number == 16 ? withBody("arrived") : redirectTo("/" + std::to_string(number + 1));
    });
    HttpClient client;
    const auto response = client.get(server.https() + "/0");
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "arrived");
}

TEST(HttpSession, ARedirectsBodyIsNotReadBeforeItIsFollowed)
{
    Reply endless = redirectTo("/b");
    endless.endless = true;
    LoopbackServer server(routes({{"/a", endless}, {"/b", withBody("here")}}));
    HttpClient client;
    const auto response = client.get(server.https() + "/a");
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "here");
}

TEST(HttpSession, WithoutCredentialsARedirectMayLeadToAnotherOriginButNotToHttp)
{
    LoopbackServer other([](const Request&) { return withBody("other"); });
    LoopbackServer server(
        routes({{"/other", redirectTo(other.https())}, {"/down", redirectTo(other.http())}}));
    HttpClient client;
    EXPECT_EQ(client.get(server.https() + "/other").value().body, "other");
    EXPECT_EQ(client.get(server.https() + "/down").value().status, 302);
    EXPECT_EQ(client.get(server.http() + "/down").value().body, "other");
    EXPECT_EQ(client.get(server.http() + "/other").value().body, "other");
}

TEST(HttpSession, CompressionIsNotAskedForButUnderstood)
{
    // printf '{"version":"11.40.0"}' | gzip -n
    static constexpr unsigned char gzip[]
        = {0x1f, 0x8b, 0x08, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x03, 0xab, 0x56, 0x2a, 0x4b, 0x2d,
            0x2a, 0xce, 0xcc, 0xcf, 0x53, 0xb2, 0x52, 0x32, 0x34, 0xd4, 0x33, 0x31, 0xd0, 0x33,
            0x50, 0xaa, 0x05, 0x00, 0x8c, 0x3c, 0x80, 0x14, 0x15, 0x00, 0x00, 0x00};
    Reply reply = withBody({reinterpret_cast<const char*>(gzip), sizeof gzip});
    reply.headers = {{"Content-Encoding", "gzip"}};
    LoopbackServer server([reply](const Request&) { return reply; });
    HttpClient client;
    const auto response = client.get(server.https());
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "{\"version\":\"11.40.0\"}");
    EXPECT_EQ(server.requests()[0].header("Accept-Encoding"), "");
}

TEST(HttpSession, NothingIsRememberedFromReplyToRequest)
{
    Reply reply = withBody("x");
    reply.headers
        = {{"Set-Cookie", "id=1; Path=/"}, {"ETag", "\"1\""}, {"Cache-Control", "max-age=3600"},
            {"Strict-Transport-Security", "max-age=3600"}, {"Alt-Svc", "h2=\":1\"; ma=3600"}};
    LoopbackServer server([reply](const Request&) { return reply; });
    HttpClient client;
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(client.get(server.https("localhost")));
        ASSERT_TRUE(client.get(server.http("localhost")));
    }
    for (const auto& request : server.requests())
        EXPECT_EQ(request.headers.size(), 1U) << request.raw;
}

TEST(HttpSession, ASessionThatAcceptsAnyCertificateSendsNoCredentials)
{
    LoopbackServer server([](const Request&) { return Reply{}; });
    HttpClient client;
    const Url url = *Url::fromText(server.https());
    EXPECT_FALSE(client.send({url}, {{"Authorization", "Basic eDp5"}}, ServerTrust::AcceptAny));
    EXPECT_FALSE(client.send({url, "POST", "client_secret=x"}, {}, ServerTrust::AcceptAny));
    EXPECT_FALSE(client.send({url}, {{"cookie", "a=b"}}, ServerTrust::AcceptAny));
    EXPECT_EQ(server.traffic().connections, 0U);
    ASSERT_EQ(client.complaints.size(), 3U);
    EXPECT_EQ(client.complaints[0],
        "nothing was sent to " + server.https()
            + ": no credentials go to a server whose certificate is not verified");
    EXPECT_TRUE(client.send({url}, {{"User-Agent", "x"}}, ServerTrust::AcceptAny));
}

TEST(HttpSession, KeysOfConnectionsAreNotLogged)
{
    // The library looks at the variable when it is first used, so this needs a process of its own.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const auto file = std::filesystem::temp_directory_path()
                / ("zarn-keylog-" + std::to_string(getpid()));
            setenv("SSLKEYLOGFILE", file.c_str(), 1);
            LoopbackServer server([](const Request&) { return Reply{}; });
            HttpClient client;
            const bool got = client.get(server.https()).has_value();
            std::error_code error;
            const auto size = std::filesystem::file_size(file, error);
            std::filesystem::remove(file);
            std::_Exit(!got ? 3 : !error && size > 0 ? 4 : 0);
        },
        testing::ExitedWithCode(0), "");
}

class HttpProxy : public testing::Test {
protected:
    void TearDown() override
    {
        for (const char* name : {"http_proxy", "https_proxy", "all_proxy", "ALL_PROXY"})
            unsetenv(name);
    }
    static Reply forbidden()
    {
        Reply reply;
        reply.status = 403;
        return reply;
    }

    HttpClient client;
    LoopbackServer proxy{[](const Request&) { return forbidden(); }};
};

TEST_F(HttpProxy, SeesNothingOfAnHttpsRequestButItsHostAndPort)
{
    for (const char* variable : {"https_proxy", "all_proxy"}) {
        setenv(variable, proxy.http().c_str(), 1);
        EXPECT_FALSE(client.send({*Url::fromText("https://zarn.example:8443/api"), "POST", "s=x"},
            {{"Authorization", "Basic c2VjcmV0"}, {"User-Agent", "Zarn"}}));
        unsetenv(variable);
        ASSERT_FALSE(proxy.requests().empty());
        EXPECT_EQ(proxy.requests().back().raw,
            "CONNECT zarn.example:8443 HTTP/1.1\r\nHost: zarn.example:8443\r\n"
            "Proxy-Connection: Keep-Alive\r\n\r\n");
    }
}

TEST_F(HttpProxy, AProxysRefusalIsNoResponse)
{
    setenv("https_proxy", proxy.http().c_str(), 1);
    EXPECT_FALSE(client.get("https://zarn.example/"));
}

TEST_F(HttpProxy, HttpToThisComputerNeverGoesThroughOne)
{
    LoopbackServer server([](const Request&) { return withBody("direct"); });
    for (const char* variable : {"http_proxy", "all_proxy", "ALL_PROXY"})
        setenv(variable, proxy.http().c_str(), 1);
    EXPECT_EQ(client.get(server.http(), {{"Authorization", "Basic x"}}).value().body, "direct");
    EXPECT_EQ(proxy.traffic().connections, 0U);
}

TEST(HttpLimits, ATlsHandshakeThatIsNeverAnsweredEndsAtTheConnectLimit)
{
    LoopbackServer server([](const Request&) { return Reply{}; });
    HttpLimits limits = HttpClient::patientLimits();
    limits.connect = 150ms;
    HttpClient client(limits);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(client.get("https://" + server.http().substr(7)));
    const auto taken = std::chrono::steady_clock::now() - start;
    EXPECT_GE(taken, 150ms);
    EXPECT_LT(taken, 30s);
}

TEST(HttpLimits, SilenceEndsAtTheIdleLimit)
{
    Reply silent = withRaw("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc");
    silent.stall = true;
    Reply slow;
    slow.delay = 100s;
    LoopbackServer server(routes({{"/silent", silent}, {"/slow", slow}}));
    HttpLimits limits = HttpClient::patientLimits();
    limits.idle = 150ms;
    HttpClient client(limits);
    for (const char* path : {"/silent", "/slow"}) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(client.get(server.https() + path)) << path;
        const auto taken = std::chrono::steady_clock::now() - start;
        EXPECT_GE(taken, 150ms) << path;
        EXPECT_LT(taken, 30s) << path;
    }
}

TEST(HttpLimits, EveryByteCountsEvenWithinOneHeaderLine)
{
    // Each line takes longer than the idle limit; no pause does.
    Reply slow = withRaw(
        "HTTP/1.1 200 OK\r\nX-Long: " + std::string(40, 'x') + "\r\nContent-Length: 2\r\n\r\nok");
    slow.byteInterval = 10ms;
    LoopbackServer server([slow](const Request&) { return slow; });
    HttpLimits limits = HttpClient::patientLimits();
    limits.idle = 300ms;
    HttpClient client(limits);
    std::optional<HttpResponse> response;
    for (bool stoodStill = true; !response && stoodStill;) {
        const StandstillWatch watch;
        response = client.get(server.https());
        stoodStill = watch.longest() > 200ms;
    }
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "ok");
}

TEST(HttpLimits, AReplyThatTricklesEndsAtTheTotalLimit)
{
    Reply trickle = withBody("x");
    trickle.endless = true;
    trickle.byteInterval = 10ms;
    LoopbackServer server([trickle](const Request&) { return trickle; });
    HttpLimits limits = HttpClient::patientLimits();
    limits.total = 400ms;
    HttpClient client(limits);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(client.get(server.https()));
    const auto taken = std::chrono::steady_clock::now() - start;
    EXPECT_GE(taken, 400ms);
    EXPECT_LT(taken, 30s);
}

TEST(HttpLimits, RedirectsShareTheTotalLimit)
{
    Reply slow = redirectTo("/");
    slow.delay = 60ms;
    LoopbackServer server([slow](const Request&) { return slow; });
    HttpLimits limits = HttpClient::patientLimits();
    limits.total = 300ms;
    HttpClient client(limits);
    EXPECT_FALSE(client.get(server.https()));
    EXPECT_LT(server.requests().size(), 8U);
}

TEST(HttpLimits, TheRequestsOwnTimeoutCountsWhereItIsShorter)
{
    Reply slow;
    slow.delay = 100s;
    LoopbackServer server([slow](const Request&) { return slow; });
    HttpClient client;
    UrlRequest request{*Url::fromText(server.https())};
    request.timeout = 1s;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(client.send(request));
    const auto taken = std::chrono::steady_clock::now() - start;
    EXPECT_GE(taken, 1s);
    EXPECT_LT(taken, 30s);
}

TEST(HttpLimits, TheLimitsOfTheProgramAreThePromisedOnes)
{
    const HttpLimits limits;
    EXPECT_EQ(limits.connect, 60s);
    EXPECT_EQ(limits.idle, 60s);
    EXPECT_EQ(limits.total, 300s);
    EXPECT_EQ(limits.bodyBytes, 16U * 1024 * 1024);
    EXPECT_EQ(UrlRequest{*Url::fromText("https://a")}.timeout, 60s);
}

TEST(HttpLimits, DestroyingTheSessionsDoesNotWaitForTheirTasks)
{
    Reply slow;
    slow.delay = 100s;
    LoopbackServer server([slow](const Request&) { return slow; });
    HttpClient client;
    UrlSessionDelegate delegate;
    bool called = false;
    const auto session = client.sessions->makeSession({}, delegate);
    for (const auto& url : {server.https() + "/a", std::string("https://zarn.invalid/")})
        session->dataTask({*Url::fromText(url)}, [&](const UrlReply&) { called = true; });
    const auto start = std::chrono::steady_clock::now();
    client.sessions.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 30s);
    client.queue.runPosted();
    EXPECT_FALSE(called);
    session->dataTask({*Url::fromText(server.https())}, [&](const UrlReply&) { called = true; });
    client.queue.runPosted();
    EXPECT_FALSE(called);
}

} // namespace
} // namespace zarn::linux_backend
