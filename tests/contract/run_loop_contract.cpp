// SPDX-License-Identifier: MIT
#include "tests/contract/run_loop_contract.h"

#include <string>
#include <thread>

namespace zarn {
namespace {

TEST_F(RunLoopContract, WorkRunsInOrderAndNeverWithinTheCallThatSubmitsIt)
{
    std::string done;
    loop().performOnMainThread([&] {
        loop().performOnMainThread([&] { done += "3"; });
        done += "1";
    });
    loop().performOnMainThread([&] { done += "2"; });
    EXPECT_EQ(done, "");
    EXPECT_TRUE(loop().runUntil([&] { return done.size() == 3; }));
    EXPECT_EQ(done, "123");
}

TEST_F(RunLoopContract, WhatIsDoneNeedsNoWork)
{
    bool isRun = false;
    loop().performOnMainThread([&] { isRun = true; });
    EXPECT_TRUE(loop().runUntil([] { return true; }));
    EXPECT_FALSE(isRun);
}

TEST_F(RunLoopContract, NoWorkRunsAfterTheOneThatIsWaitedFor)
{
    std::string done;
    loop().performOnMainThread([&] { done += "1"; });
    loop().performOnMainThread([&] { done += "2"; });
    EXPECT_TRUE(loop().runUntil([&] { return !done.empty(); }));
    EXPECT_EQ(done, "1");
    loop().runSubmitted();
    EXPECT_EQ(done, "12");
}

TEST_F(RunLoopContract, WorkOfOtherThreadsRunsOnThisOne)
{
    std::thread::id ranOn;
    std::thread other(
        [&] { loop().performOnMainThread([&] { ranOn = std::this_thread::get_id(); }); });
    other.join();
    EXPECT_TRUE(loop().runUntil([&] { return ranOn != std::thread::id(); }));
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST_F(RunLoopContract, AnInterruptionEndsTheRunAndNoWorkBegins)
{
    EXPECT_FALSE(loop().isInterrupted());
    std::string done;
    loop().performOnMainThread([&] {
        done += "1";
        fixture->interrupt();
    });
    loop().performOnMainThread([&] { done += "2"; });
    EXPECT_FALSE(loop().runUntil([] { return false; }));
    EXPECT_TRUE(loop().isInterrupted());
    EXPECT_EQ(done, "1");
    EXPECT_FALSE(loop().runUntil([] { return false; }));
    loop().runSubmitted();
    EXPECT_EQ(done, "12");
}

TEST_F(RunLoopContract, WhatIsDoneIsDoneInSpiteOfAnInterruption)
{
    fixture->interrupt();
    EXPECT_TRUE(loop().runUntil([] { return true; }));
}

} // namespace
} // namespace zarn
