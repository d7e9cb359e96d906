// SPDX-License-Identifier: MIT
#include "platform/linux/http/lazy_url_sessions.h"
#include "tests/platform/linux/http/http_fixture.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

namespace zarn::linux_backend {
namespace {

using demo::Reply;
using demo::Request;

std::optional<HttpResponse> fetch(
    UrlSessions& sessions, TestMainQueue& queue, const std::string& url, int& calls)
{
    UrlSessionDelegate delegate;
    std::optional<HttpResponse> result;
    const int before = calls;
    sessions.makeSession({}, delegate)->dataTask({*Url::fromText(url)}, [&](const UrlReply& reply) {
        if (reply)
            result = reply.value();
        ++calls;
    });
    EXPECT_EQ(calls, before) << "a completion ran within the call";
    EXPECT_TRUE(queue.runUntil([&] { return calls > before; }));
    return result;
}

bool isMapped(const std::string& library)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(library) != std::string::npos)
            return true;
    }
    return false;
}

TEST(LazyUrlSessions, LoadsTheModuleOnFirstUseAndSendsThroughIt)
{
    trustedAuthority();
    LoopbackServer server([](const Request&) {
        Reply reply;
        reply.body = "through the module";
        return reply;
    });
    TestMainQueue queue;
    LazyUrlSessions sessions(queue);
    sessions.removeAllCachedResponses();
    EXPECT_FALSE(isMapped("zarn-http.so"));
    int calls = 0;
    const auto response = fetch(sessions, queue, server.https(), calls);
    EXPECT_TRUE(isMapped("zarn-http.so"));
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "through the module");
    EXPECT_EQ(calls, 1);
}

TEST(LazyUrlSessions, MayBePreloadedOnAnotherThreadWhileTheMainThreadAsks)
{
    trustedAuthority();
    LoopbackServer server([](const Request&) { return Reply{}; });
    TestMainQueue queue;
    LazyUrlSessions sessions(queue);
    std::thread preloading([&] { sessions.preload(); });
    int calls = 0;
    EXPECT_TRUE(fetch(sessions, queue, server.https(), calls));
    preloading.join();
    sessions.preload();
    EXPECT_TRUE(fetch(sessions, queue, server.https(), calls));
    EXPECT_EQ(calls, 2);
}

} // namespace
} // namespace zarn::linux_backend
