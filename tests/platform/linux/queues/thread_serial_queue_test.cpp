// SPDX-License-Identifier: MIT
#include "platform/linux/queues/thread_serial_queue.h"

#include <gtest/gtest.h>

#include <future>

#include <sys/resource.h>
#include <unistd.h>

namespace zarn::linux_backend {
namespace {

using namespace std::chrono_literals;

TEST(ThreadSerialQueue, WorkRunsOnOneThreadOfItsOwn)
{
    ThreadSerialQueue queue("com.zarn.zarn-shortcuts");
    std::promise<std::thread::id> first;
    std::promise<std::thread::id> second;
    queue.async([&] { first.set_value(std::this_thread::get_id()); });
    queue.async([&] { second.set_value(std::this_thread::get_id()); });
    const auto id = first.get_future().get();
    EXPECT_EQ(id, second.get_future().get());
    EXPECT_NE(id, std::this_thread::get_id());
}

TEST(ThreadSerialQueue, ItsThreadHasLowerPriorityThanTheWindow)
{
    ThreadSerialQueue queue("com.zarn.zarn-shortcuts");
    std::promise<int> nice;
    queue.async(
        [&] { nice.set_value(::getpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()))); });
    EXPECT_GT(nice.get_future().get(), ::getpriority(PRIO_PROCESS, 0));
}

TEST(ThreadSerialQueue, DrainGivesUpWhenTimeRunsOut)
{
    std::promise<void> release;
    {
        ThreadSerialQueue queue("com.zarn.zarn-shortcuts");
        queue.async([&] { release.get_future().wait(); });
        EXPECT_FALSE(queue.drain(20ms));
        release.set_value();
        EXPECT_TRUE(queue.drain(10s));
    }
}

TEST(ThreadSerialQueue, DestructionGivesUpOnWorkThatDoesNotEnd)
{
    const auto release = std::make_shared<std::promise<void>>();
    const auto ended = std::make_shared<std::promise<void>>();
    {
        ThreadSerialQueue queue("com.zarn.zarn-shortcuts", 20ms);
        queue.async([release, ended] {
            release->get_future().wait();
            ended->set_value();
        });
        queue.async([] { ADD_FAILURE() << "work that had not begun runs after its queue"; });
    }
    release->set_value();
    ended->get_future().wait();
}

} // namespace
} // namespace zarn::linux_backend
