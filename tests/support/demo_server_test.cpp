// SPDX-License-Identifier: MIT
#include "base/base64.h"
#include "tests/support/demo_server.h"
#include "tests/support/demo_zarn_pro.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <unistd.h>

namespace zarn::demo {
namespace {

Request request(std::string method, std::string target, Headers headers = {}, std::string body = "")
{
    Request made;
    made.method = std::move(method);
    made.target = std::move(target);
    made.version = "HTTP/1.1";
    made.headers = std::move(headers);
    made.body = std::move(body);
    return made;
}

Request basicRequest(const std::string& credentials)
{
    return request(
        "POST", "/api/v1/auth/token", {{"Authorization", "Basic " + base64Encoded(credentials)}});
}

Request formRequest(std::string body)
{
    return request("POST", "/api/oauth/token",
        {{"Content-Type", "application/x-www-form-urlencoded"}}, std::move(body));
}

Request versionRequest(const std::string& token)
{
    return request("GET", "/api/v1/zarn-pro-version", {{"Authorization", "Bearer " + token}});
}

const std::string goodForm
    = "grant_type=client_credentials&client_id=demo-client&client_secret=demo-client-secret";

TEST(DemoServer, GivesATokenForUsernameAndPassword)
{
    ZarnPro server({});
    const Reply reply = server.handle(basicRequest("demo:zarn-demo-password"));
    EXPECT_EQ(reply.status, 200);
    EXPECT_TRUE(reply.body.starts_with("{\"token\":\"demo-token-1\",\"expires\":\"")) << reply.body;
    EXPECT_EQ(server.handle(basicRequest("demo:wrong")).status, 401);
    EXPECT_EQ(server.handle(basicRequest("other:zarn-demo-password")).status, 401);
    EXPECT_EQ(server.handle(request("POST", "/api/v1/auth/token")).status, 401);
    EXPECT_EQ(server.handle(request("GET", "/api/v1/auth/token")).status, 405);
}

TEST(DemoServer, GivesATokenForAnApiClient)
{
    ZarnPro server({});
    const Reply reply = server.handle(formRequest(goodForm));
    EXPECT_EQ(reply.status, 200);
    EXPECT_TRUE(reply.body.starts_with("{\"access_token\":\"demo-token-1\",")) << reply.body;
    EXPECT_EQ(server.handle(formRequest(goodForm + "x")).status, 401);
    EXPECT_EQ(server.handle(formRequest("")).status, 401);
    EXPECT_EQ(server.handle(request("POST", "/api/oauth/token", {}, goodForm)).status, 415);
}

TEST(DemoServer, TakesClientSecretsThatWereNotEncoded)
{
    ZarnProOptions options;
    options.clientSecret = "a+b&c=d%41";
    ZarnPro server(options);
    const std::string start = "grant_type=client_credentials&client_id=demo-client&client_secret=";
    EXPECT_EQ(server.handle(formRequest(start + "a+b&c=d%41")).status, 200);
    EXPECT_EQ(server.handle(formRequest(start + "a%2Bb%26c%3Dd%2541")).status, 200);
    EXPECT_EQ(server.handle(formRequest(start + "a+b")).status, 401);
}

TEST(DemoServer, AnswersItsVersionToATokenUntilThatIsInvalidated)
{
    ZarnPro server({});
    EXPECT_EQ(server.handle(versionRequest("demo-token-1")).status, 401);
    server.handle(basicRequest("demo:zarn-demo-password"));
    EXPECT_EQ(
        server.handle(versionRequest("demo-token-1")).body, "{\"version\":\"11.40.0-t1712\"}");
    const Headers bearer = {{"Authorization", "Bearer demo-token-1"}};
    EXPECT_EQ(server.handle(request("POST", "/api/v1/auth/invalidate-token", bearer)).status, 204);
    EXPECT_EQ(server.handle(versionRequest("demo-token-1")).status, 401);
}

TEST(DemoServer, ShowsAnUpdatePageWhoseBodyCanBeSet)
{
    ZarnProOptions options;
    options.publishedVersion = "1.10.0";
    ZarnPro server(options);
    EXPECT_NE(server.handle(request("GET", "/releases"))
                  .body.find("<tr><td>Current Version</td><td>1.10.0</td></tr>"),
        std::string::npos);
    server.handle(request("POST", "/demo/page", {}, "path=%2Freleases&body=a+%26+b"));
    EXPECT_EQ(server.handle(request("GET", "/releases?x")).body, "a & b");
    EXPECT_EQ(server.handle(request("GET", "/nothing")).status, 404);
}

TEST(DemoServer, AFaultChangesTheRepliesItMatchesAndNoOther)
{
    ZarnPro server({});
    const std::string path = "path=/releases&method=GET&skip=1&times=2";
    EXPECT_EQ(server
                  .handle(request("POST", "/demo/fault", {},
                      path + "&status=503&body=no&delay-ms=7&byte-ms=3&drop-after=9"))
                  .status,
        200);
    EXPECT_EQ(server.handle(request("GET", "/releases")).status, 200);
    for (int i = 0; i < 2; ++i) {
        const Reply reply = server.handle(request("GET", "/releases"));
        EXPECT_EQ(reply.status, 503);
        EXPECT_EQ(reply.body, "no");
        EXPECT_EQ(reply.delay.count(), 7);
        EXPECT_EQ(reply.byteInterval.count(), 3);
        EXPECT_EQ(reply.dropAfter, 9U);
        EXPECT_EQ(server.handle(request("GET", "/other")).status, 404);
    }
    EXPECT_EQ(server.handle(request("GET", "/releases")).status, 200);
}

TEST(DemoServer, ResetDropsFaultsAndRecord)
{
    ZarnPro server({});
    server.handle(request("POST", "/demo/fault", {}, "path=/rel*&raw=junk"));
    EXPECT_EQ(server.handle(request("GET", "/releases")).raw, "junk");
    EXPECT_EQ(server.requests().size(), 1U);
    server.handle(request("POST", "/demo/reset"));
    EXPECT_EQ(server.requests().size(), 0U);
    EXPECT_FALSE(server.handle(request("GET", "/releases")).raw);
}

TEST(DemoServer, AFaultThatCannotBeReadIsRefused)
{
    std::string error;
    EXPECT_FALSE(parseFault("colour=red", error));
    EXPECT_EQ(error, "field \"colour\" is unknown or its number is invalid");
    EXPECT_FALSE(parseFault("status=many", error));
    EXPECT_FALSE(parseFault("header=NoColon", error));
    EXPECT_TRUE(parseFault("", error));
}

TEST(DemoServer, RecordsEveryByteOfARequestAsOneJsonLine)
{
    const auto file = std::filesystem::temp_directory_path()
        / ("zarn-record-" + std::to_string(getpid()) + ".jsonl");
    {
        ZarnPro server({});
        ASSERT_TRUE(server.recordTo(file));
        server.handle(
            request("POST", "/a\"b\\", {{"X-One", "1"}, {"x-one", "\xC3\xBC"}}, "\x01\xFF\n"));
        server.handle(request("GET", "/demo/requests"));
    }
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    std::filesystem::remove(file);
    EXPECT_EQ(text.str(),
        "{\"method\":\"POST\",\"target\":\"/a\\\"b\\\\\",\"version\":\"HTTP/1.1\","
        "\"headers\":[[\"X-One\",\"1\"],[\"x-one\",\"\\u00c3\\u00bc\"]],"
        "\"body\":\"\\u0001\\u00ff\\u000a\",\"tls\":\"\",\"serverName\":\"\",\"port\":0}\n");
}

TEST(DemoServer, ListensOnLoopbackOnly)
{
    for (const char* address :
        {"0.0.0.0", "::", "10.0.0.1", "192.168.0.1", "128.0.0.1", "name", ""}) {
        ServerOptions options;
        options.https = false;
        options.addresses = {address};
        std::string error;
        EXPECT_EQ(Server::start(
                      options, [](const Request&) { return Reply{}; }, error),
            nullptr);
        EXPECT_EQ(error, std::string(address) + " is not a loopback address");
    }
}

TEST(DemoServer, SaysWhichPortIsTaken)
{
    ServerOptions options;
    options.https = false;
    std::string error;
    const auto handler = [](const Request&) { return Reply{}; };
    const auto first = Server::start(options, handler, error);
    ASSERT_TRUE(first);
    options.httpPort = first->httpPort();
    EXPECT_EQ(Server::start(options, handler, error), nullptr);
    EXPECT_EQ(
        error, "127.0.0.1 port " + std::to_string(first->httpPort()) + ": Address already in use");
}

TEST(DemoServer, WritesTheHeadOfAReply)
{
    Reply reply;
    reply.status = 401;
    reply.headers = {{"Location", "/x"}};
    reply.bodyStart = "<";
    reply.body = "ab";
    reply.repeat = 3;
    reply.bodyEnd = ">";
    EXPECT_EQ(replyHead(reply),
        "HTTP/1.1 401 Unauthorized\r\nLocation: /x\r\nContent-Length: 8\r\nConnection: "
        "close\r\n\r\n");
    reply.status = 204;
    EXPECT_EQ(
        replyHead(reply), "HTTP/1.1 204 No Content\r\nLocation: /x\r\nConnection: close\r\n\r\n");
}

} // namespace
} // namespace zarn::demo
