// SPDX-License-Identifier: MIT
#include "platform/memory/memory_url_sessions.h"

#include <gtest/gtest.h>

namespace zarn::memory {
namespace {

class AcceptingDelegate final : public UrlSessionDelegate {
public:
    ServerTrust serverTrustDisposition() override { return ServerTrust::AcceptAny; }
};

class MemoryUrlSessionsTest : public testing::Test {
protected:
    UrlRequest request(const char* path) const
    {
        return {*Url::fromText(std::string("https://zarn.example/") + path)};
    }
    DataTaskCompletion recorder()
    {
        return [this](const UrlReply& reply) {
            answers.push_back(reply
                    ? std::to_string(reply.value().status) + " " + reply.value().body
                    : "nothing");
        };
    }

    std::vector<std::string> events;
    MemoryUrlSessions sessions{events};
    UrlSessionDelegate delegate;
    std::vector<std::string> answers;
};

TEST_F(MemoryUrlSessionsTest, RecordsTheWholeRequest)
{
    AcceptingDelegate accepting;
    const auto session = sessions.makeSession(
        {UrlSessionConfiguration::Storage::Ephemeral, {{"A", "1"}, {"B", "2"}}}, accepting);
    session->dataTask(
        {*Url::fromText("https://zarn.example/x"), "POST", "body", std::chrono::seconds(7)},
        recorder());
    ASSERT_EQ(sessions.requests.size(), 1U);
    const auto& recorded = sessions.requests[0];
    EXPECT_EQ(recorded.method, "POST");
    EXPECT_EQ(recorded.url, "https://zarn.example/x");
    EXPECT_EQ(recorded.headers, (HttpHeaders{{"A", "1"}, {"B", "2"}}));
    EXPECT_EQ(recorded.body, "body");
    EXPECT_EQ(recorded.timeout, std::chrono::seconds(7));
    EXPECT_EQ(recorded.storage, UrlSessionConfiguration::Storage::Ephemeral);
    EXPECT_EQ(recorded.trust, ServerTrust::AcceptAny);
    EXPECT_EQ(recorded.delegate, &accepting);
    EXPECT_EQ(events, std::vector<std::string>{"request POST https://zarn.example/x"});
}

TEST_F(MemoryUrlSessionsTest, DeliversScriptedRepliesInOrderAndOnlyWhenTold)
{
    sessions.reply(200, "one");
    sessions.replyNothing();
    const auto session = sessions.makeSession({}, delegate);
    session->dataTask(request("1"), recorder());
    session->dataTask(request("2"), recorder());
    session->dataTask(request("3"), recorder());
    EXPECT_TRUE(answers.empty());
    EXPECT_EQ(sessions.running(), 3U);
    EXPECT_TRUE(sessions.deliver());
    EXPECT_EQ(answers, std::vector<std::string>{"200 one"});
    sessions.deliverAll();
    EXPECT_EQ(answers, (std::vector<std::string>{"200 one", "nothing", "nothing"}));
    EXPECT_FALSE(sessions.deliver());
}

TEST_F(MemoryUrlSessionsTest, AnInvalidatedSessionFinishesItsTasksAndStartsNoOther)
{
    const auto session = sessions.makeSession({}, delegate);
    session->dataTask(request("1"), recorder());
    session->finishTasksAndInvalidate();
    session->finishTasksAndInvalidate();
    session->dataTask(request("2"), recorder());
    sessions.deliverAll();
    EXPECT_EQ(answers.size(), 1U);
    EXPECT_EQ(sessions.requests.size(), 1U);
    EXPECT_EQ(sessions.sessionsInvalidated, 1);
}

TEST_F(MemoryUrlSessionsTest, CountsSessionsAndEmptiedCaches)
{
    sessions.removeAllCachedResponses();
    sessions.removeAllCachedResponses();
    sessions.makeSession({}, delegate);
    EXPECT_EQ(sessions.cacheClears, 2);
    EXPECT_EQ(sessions.sessionsMade, 1);
    EXPECT_EQ(events, std::vector<std::string>(2, "empty the URL cache"));
}

TEST_F(MemoryUrlSessionsTest, ATaskStartedByACompletionIsDeliveredAfterIt)
{
    const auto session = sessions.makeSession({}, delegate);
    session->dataTask(request("1"), [&](const UrlReply&) {
        session->dataTask(request("2"), recorder());
        EXPECT_TRUE(answers.empty());
    });
    sessions.deliverAll();
    EXPECT_EQ(answers, std::vector<std::string>{"nothing"});
}

} // namespace
} // namespace zarn::memory
