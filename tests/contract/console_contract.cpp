// SPDX-License-Identifier: MIT
#include "tests/contract/console_contract.h"

#include <algorithm>
#include <thread>
#include <vector>

namespace zarn {
namespace {

TEST_F(ConsoleContract, EveryLineIsThereAtOnceWithItsLineBreak)
{
    fixture->console().writeLine("first");
    fixture->console().writeLine("");
    fixture->console().writeLine("größer 😀");
    EXPECT_EQ(fixture->written(), "first\n\ngrößer 😀\n");
}

TEST_F(ConsoleContract, LinesOfSeveralThreadsStayWhole)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 100; ++n)
                fixture->console().writeLine("0123456789");
        });
    for (auto& thread : threads)
        thread.join();
    std::string expected;
    for (int i = 0; i < 400; ++i)
        expected += "0123456789\n";
    EXPECT_EQ(fixture->written(), expected);
}

} // namespace
} // namespace zarn
