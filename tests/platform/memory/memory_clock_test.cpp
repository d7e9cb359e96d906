// SPDX-License-Identifier: MIT
#include "platform/memory/memory_clock.h"

#include <gtest/gtest.h>

namespace zarn::memory {
namespace {

constexpr const char* filePattern = "yyyyMMdd_HHmmss";
constexpr const char* entryPattern = "E MMM dd HH:mm:ss";

TEST(MemoryClock, StandsStillUntilItIsSet)
{
    MemoryClock clock;
    EXPECT_EQ(clock.now(), clock.now());
    clock.time = {0};
    EXPECT_EQ(clock.now(), Date{0});
}

TEST(MemoryDateFormatter, WritesThePatternsOfTheLog)
{
    const MemoryDateFormatter dates;
    const struct {
        double seconds;
        const char* file;
        const char* entry;
    } rows[] = {
        {1740824100, "20250301_101500", "Sat Mar 01 10:15:00"},
        {0, "19700101_000000", "Thu Jan 01 00:00:00"},
        {-1, "19691231_235959", "Wed Dec 31 23:59:59"},
        {951782400, "20000229_000000", "Tue Feb 29 00:00:00"},
        {1735689599.999, "20241231_235959", "Tue Dec 31 23:59:59"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(dates.string({row.seconds}, filePattern), row.file);
        EXPECT_EQ(dates.string({row.seconds}, entryPattern), row.entry);
    }
}

TEST(MemoryDateFormatter, FollowsItsDistanceFromUtc)
{
    MemoryDateFormatter dates;
    dates.secondsFromUtc = -11 * 3600;
    EXPECT_EQ(dates.string({1740824100}, filePattern), "20250228_231500");
    dates.secondsFromUtc = 5.5 * 3600;
    EXPECT_EQ(dates.string({1740824100}, entryPattern), "Sat Mar 01 15:45:00");
}

} // namespace
} // namespace zarn::memory
