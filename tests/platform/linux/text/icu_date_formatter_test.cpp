// SPDX-License-Identifier: MIT
#include "platform/linux/text/icu_text.h"

#include "tests/support/scoped_variable.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace zarn::linux_backend {
namespace {

constexpr Date saturday{1740824100};

TEST(IcuDateFormatter, KnowsZonesByNameAndTheirSummerTime)
{
    const ScopedVariable locale("LC_ALL", "C");
    const ScopedVariable zone("TZ", "Europe/Berlin");
    const IcuDateFormatter formatter;
    EXPECT_EQ(formatter.string(saturday, "HH:mm"), "11:15");
    EXPECT_EQ(formatter.string(Date{1751364900}, "HH:mm"), "12:15");
}

TEST(IcuDateFormatter, SpeaksTheUsersLanguage)
{
    const ScopedVariable zone("TZ", "UTC");
    ScopedVariable locale("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(IcuDateFormatter().string(saturday, "E MMM dd"), "Sa. März 01");
    locale.set("");
    const ScopedVariable time("LC_TIME", "fr_FR.UTF-8");
    EXPECT_EQ(IcuDateFormatter().string(saturday, "E MMM dd"), "sam. mars 01");
}

TEST(IcuDateFormatter, SpeaksEnglishInThePlainLocale)
{
    const ScopedVariable zone("TZ", "UTC");
    for (const char* name : {"C", "POSIX", "C.UTF-8"}) {
        const ScopedVariable locale("LC_ALL", name);
        EXPECT_EQ(IcuDateFormatter().string(saturday, "E MMM dd HH:mm:ss"), "Sat Mar 01 10:15:00");
    }
}

TEST(IcuDateFormatter, MayBeUsedByManyThreads)
{
    const ScopedVariable locale("LC_ALL", "C");
    const ScopedVariable zone("TZ", "UTC");
    const IcuDateFormatter formatter;
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (std::size_t i = 0; i < wrong.size(); ++i)
        threads.emplace_back([&, i] {
            const Date date{saturday.secondsSince1970 + static_cast<double>(i)};
            const auto expected = "Sat Mar 01 10:15:0" + std::to_string(i);
            for (int n = 0; n < 500; ++n)
                wrong[i] += formatter.string(date, "E MMM dd HH:mm:ss") != expected;
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

} // namespace
} // namespace zarn::linux_backend
