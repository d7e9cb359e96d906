// SPDX-License-Identifier: MIT
#include "platform/memory/memory_serial_queue.h"

#include <gtest/gtest.h>

namespace zarn::memory {
namespace {

TEST(MemorySerialQueue, OnlyStoresUntilItIsTold)
{
    MemorySerialQueue queue("label");
    std::vector<int> ran;
    queue.async([&] { ran.push_back(1); });
    queue.async([&] {
        ran.push_back(2);
        queue.async([&] { ran.push_back(3); });
        EXPECT_EQ(ran.size(), 2U) << "work that was added does not run inside its adder";
    });
    EXPECT_TRUE(ran.empty());
    EXPECT_EQ(queue.pending(), 2U);
    queue.runAll();
    EXPECT_EQ(ran, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(queue.pending(), 0U);
}

TEST(MemorySerialQueue, DrainsWhenItIsDestroyed)
{
    int ran = 0;
    {
        MemorySerialQueues queues;
        const auto queue = queues.make("label");
        EXPECT_EQ(queues.made, std::vector{static_cast<MemorySerialQueue*>(queue.get())});
        EXPECT_EQ(queue->label(), "label");
        queue->async([&] { ++ran; });
    }
    EXPECT_EQ(ran, 1);
}

} // namespace
} // namespace zarn::memory
