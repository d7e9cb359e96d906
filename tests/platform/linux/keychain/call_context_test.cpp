// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/call_context.h"

#include <gtest/gtest.h>

#include <vector>

namespace zarn::linux_backend {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

TEST(CallContext, ACallIsOverAfterItsLimit)
{
    CallContext call;
    EXPECT_TRUE(call.isOver()) << "no call has begun";
    call.begin({1h});
    EXPECT_FALSE(call.isOver());
    EXPECT_LE(call.timeLeft(), 1h);
    EXPECT_GT(call.timeLeft(), 59min);
    call.begin({0ms});
    EXPECT_TRUE(call.isOver());
    EXPECT_EQ(call.timeLeft(), 0ms);
    call.begin({-5ms});
    EXPECT_EQ(call.timeLeft(), 0ms);
}

TEST(CallContext, ACallThatNobodyWaitsForIsOver)
{
    CallContext call;
    std::stop_source stop;
    call.begin({1h}, stop.get_token());
    EXPECT_FALSE(call.isOver());
    stop.request_stop();
    EXPECT_TRUE(call.isOver());
}

TEST(CallContext, TheTimeThatItWaitsForTheUserIsNoSilence)
{
    CallContext call;
    call.begin({1h, 3h, 5h});
    {
        const CallContext::PromptWait waiting(call, CallContext::Clock::now());
        EXPECT_GT(call.timeLeft(), 2h);
        EXPECT_LE(call.timeLeft(), 3h);
    }
    EXPECT_GT(call.timeLeft(), 59min);
    EXPECT_LE(call.timeLeft(), 1h);
}

TEST(CallContext, ACallWithoutAPromptLimitDoesNotWaitForTheUser)
{
    CallContext call;
    call.begin({1h});
    {
        const CallContext::PromptWait waiting(call, CallContext::Clock::now());
        EXPECT_TRUE(call.isOver());
    }
    EXPECT_FALSE(call.isOver());
}

TEST(CallContext, NoCallWaitsForAPromptThatHasBeenOpenTooLong)
{
    CallContext call;
    for (const auto& [age, isOver] : {std::pair(4min, false), std::pair(5min, true)}) {
        call.begin({1h, 1h});
        const CallContext::PromptWait waiting(call, CallContext::Clock::now() - age);
        EXPECT_EQ(call.isOver(), isOver);
        EXPECT_LE(call.timeLeft(), 1min);
    }
}

TEST(CallContext, AllPromptsOfACallShareItsLimit)
{
    CallContext call;
    call.begin({1h, 40ms});
    {
        const CallContext::PromptWait waiting(call, CallContext::Clock::now());
        while (!call.isOver()) { }
    }
    const CallContext::PromptWait again(call, CallContext::Clock::now());
    EXPECT_TRUE(call.isOver());
}

TEST(CallContext, TheObserverHearsWhenTheWaitForTheUserBeginsAndEnds)
{
    std::vector<bool> heard;
    CallContext call({}, [&](bool isWaiting) { heard.push_back(isWaiting); });
    call.begin({1h, 1h});
    {
        const CallContext::PromptWait waiting(call, CallContext::Clock::now());
        EXPECT_EQ(heard, std::vector<bool>{true});
    }
    EXPECT_EQ(heard, (std::vector<bool>{true, false}));
}

TEST(CallContext, EachTextIsReportedOnceWithItsFirstDetail)
{
    Texts lines;
    CallContext call([&](const std::string& line) { lines.push_back(line); });
    call.report("is locked");
    call.report("is locked");
    call.report("cannot be read", "/one");
    call.begin({1h});
    call.report("cannot be read", "/other");
    EXPECT_EQ(lines, (Texts{"keychain: is locked", "keychain: cannot be read (/one)"}));
}

TEST(CallContext, ReportsGoToStandardError)
{
    testing::internal::CaptureStderr();
    CallContext().report("is locked");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "zarn-actions: keychain: is locked\n");
}

} // namespace
} // namespace zarn::linux_backend
