// SPDX-License-Identifier: MIT
#include "tests/contract/clock_contract.h"

namespace zarn {
namespace {

TEST_F(ClockContract, TimeIsInSecondsSince1970)
{
    // 2025-01-01 and 2200-01-01: a clock in milliseconds, or since 2001, is outside.
    EXPECT_GT(clock->now().secondsSince1970, 1735689600.0);
    EXPECT_LT(clock->now().secondsSince1970, 7258118400.0);
}

TEST_F(ClockContract, ALaterLookIsNotEarlier)
{
    const auto first = clock->now();
    EXPECT_GE(clock->now(), first);
}

} // namespace
} // namespace zarn
