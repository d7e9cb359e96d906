// SPDX-License-Identifier: MIT
#include "tests/contract/serial_queue_contract.h"

#include <mutex>
#include <vector>

namespace zarn {

using namespace std::chrono_literals;

TEST_F(SerialQueueContract, KeepsItsLabel)
{
    EXPECT_EQ(queue->label(), "com.zarn.zarn-shortcuts");
}

TEST_F(SerialQueueContract, RunsWorkInSubmissionOrder)
{
    std::vector<int> order;
    for (int i = 0; i < 1000; ++i)
        queue->async([&order, i] { order.push_back(i); });
    ASSERT_TRUE(queue->drain(10s));
    ASSERT_EQ(order.size(), 1000U);
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST_F(SerialQueueContract, WorkNeverRunsWithinTheCallThatSubmitsIt)
{
    std::mutex submitting;
    bool hasRun = false;
    {
        // Work that ran within async() would stand still here forever.
        const std::lock_guard lock(submitting);
        queue->async([&] {
            const std::lock_guard inner(submitting);
            hasRun = true;
        });
        EXPECT_FALSE(hasRun);
    }
    ASSERT_TRUE(queue->drain(10s));
    EXPECT_TRUE(hasRun);
}

TEST_F(SerialQueueContract, WorkSubmittedByWorkRunsAfterWhatWasThereBefore)
{
    std::vector<std::string> order;
    queue->async([&] {
        order.emplace_back("first");
        queue->async([&] { order.emplace_back("third"); });
    });
    queue->async([&] { order.emplace_back("second"); });
    ASSERT_TRUE(queue->drain(10s));
    ASSERT_TRUE(queue->drain(10s));
    EXPECT_EQ(order, (std::vector<std::string>{"first", "second", "third"}));
}

TEST_F(SerialQueueContract, DrainOfAnIdleQueueAnswersAtOnce)
{
    EXPECT_TRUE(queue->drain(0ms));
}

TEST_F(SerialQueueContract, DestructionRunsWhatWasAccepted)
{
    int count = 0;
    for (int i = 0; i < 100; ++i)
        queue->async([&count] { ++count; });
    queue.reset();
    EXPECT_EQ(count, 100);
}

TEST_F(SerialQueueContract, WorkIsReleasedOnceItHasRun)
{
    const auto held = std::make_shared<int>(1);
    queue->async([held] {});
    queue->async([] {});
    ASSERT_TRUE(queue->drain(10s));
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace zarn
