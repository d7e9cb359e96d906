// SPDX-License-Identifier: MIT
#include "base/fatal.h"

#include <gtest/gtest.h>

#include <csignal>

namespace zarn {
namespace {

TEST(FatalErrorDeathTest, PrintsOneLineAndAborts)
{
    EXPECT_EXIT(fatalError("no storyboard"), testing::KilledBySignal(SIGABRT),
        testing::Eq("zarn-actions: fatal: no storyboard\n"));
}

} // namespace
} // namespace zarn
