// SPDX-License-Identifier: MIT
#include "base/fatal.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>

namespace zarn {
namespace {

TEST(FatalErrorDeathTest, PrintsOneLineAndAborts)
{
    EXPECT_EXIT(fatalError("no storyboard"), testing::KilledBySignal(SIGABRT),
        testing::Eq("zarn-actions: fatal: no storyboard\n"));
}

// An abort loses what is still in a buffer.
TEST(FatalErrorDeathTest, TheLineIsOutBeforeTheProcessEnds)
{
    const auto die = [] {
        std::setvbuf(stderr, nullptr, _IOFBF, BUFSIZ);
        fatalError("buffered");
    };
    EXPECT_EXIT(
        die(), testing::KilledBySignal(SIGABRT), testing::Eq("zarn-actions: fatal: buffered\n"));
}

} // namespace
} // namespace zarn
