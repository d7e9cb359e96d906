// SPDX-License-Identifier: MIT
#include "tests/contract/date_formatter_contract.h"

namespace zarn {
namespace {

TEST_F(DateFormatterContract, WritesTheStampOfALogFilesName)
{
    EXPECT_EQ(text(saturday, file), "20250301_101500");
}

TEST_F(DateFormatterContract, WritesTheStampOfALogLine)
{
    EXPECT_EQ(text(saturday, entry), "Sat Mar 01 10:15:00");
}

TEST_F(DateFormatterContract, NamesEveryWeekdayAndMonth)
{
    const auto day = 86400.0;
    std::string weekdays;
    for (int i = 0; i < 7; ++i)
        weekdays += text(saturday + i * day, "E ");
    EXPECT_EQ(weekdays, "Sat Sun Mon Tue Wed Thu Fri ");
    constexpr double newYear = 1735689600;
    std::string months;
    for (const int dayOfYear : {14, 45, 73, 104, 134, 165, 195, 226, 257, 287, 318, 348})
        months += text(newYear + dayOfYear * day, "MMM ");
    EXPECT_EQ(months, "Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec ");
}

TEST_F(DateFormatterContract, FractionsOfASecondAreCutOff)
{
    EXPECT_EQ(text(saturday + 0.999, entry), "Sat Mar 01 10:15:00");
    EXPECT_EQ(text(saturday + 1.001, entry), "Sat Mar 01 10:15:01");
}

TEST_F(DateFormatterContract, EachCallStandsForItself)
{
    EXPECT_EQ(text(saturday, entry), "Sat Mar 01 10:15:00");
    EXPECT_EQ(text(saturday, file), "20250301_101500");
    EXPECT_EQ(text(saturday + 60, file), "20250301_101600");
    EXPECT_EQ(text(saturday, entry), "Sat Mar 01 10:15:00");
}

TEST_F(DateFormatterContract, MomentsBefore1970HaveAText)
{
    EXPECT_EQ(text(-1, file), "19691231_235959");
    EXPECT_EQ(text(-0.5, file), "19691231_235959");
}

TEST_F(DateFormatterContract, AChangeOfTheTimeZoneIsSeen)
{
    EXPECT_EQ(text(saturday, entry), "Sat Mar 01 10:15:00");
    setHoursFromUtc(9);
    EXPECT_EQ(text(saturday, entry), "Sat Mar 01 19:15:00");
    setHoursFromUtc(-11);
    EXPECT_EQ(text(saturday, entry), "Fri Feb 28 23:15:00");
    EXPECT_EQ(text(saturday, file), "20250228_231500");
}

} // namespace
} // namespace zarn
