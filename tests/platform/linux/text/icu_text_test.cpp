// SPDX-License-Identifier: MIT
#include "platform/linux/text/icu_text.h"

#include "tests/support/scoped_variable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>

namespace zarn::linux_backend {
namespace {

using Words = std::vector<std::string>;

/// The locale counts when the order is first asked for.
std::unique_ptr<TextServices> inLocale(const std::string& name)
{
    const ScopedVariable locale("LC_ALL", name);
    auto texts = std::make_unique<IcuTextServices>();
    texts->localizedCompare("a", "b");
    return texts;
}

Words sortedIn(const std::string& locale, Words words)
{
    inLocale(locale)->sortLocalized(words);
    return words;
}

TEST(IcuTextServices, EachLocaleHasItsOwnOrder)
{
    EXPECT_EQ(sortedIn("de_DE.UTF-8", {"z", "ä", "a"}), (Words{"a", "ä", "z"}));
    EXPECT_EQ(sortedIn("sv_SE.UTF-8", {"z", "ä", "a"}), (Words{"a", "z", "ä"}));
    EXPECT_EQ(sortedIn("POSIX", {"z", "ä", "a"}), (Words{"a", "ä", "z"}));
}

TEST(IcuTextServices, ComparingAndSortingAgree)
{
    const auto texts = inLocale("en_US.UTF-8");
    Words words{
        "Öl", "ol", "Zürich", "zebra", "日本", "😀", "a b", "ab", "a-b", "\xff", "", "10", "9"};
    texts->sortLocalized(words);
    for (std::size_t i = 1; i < words.size(); ++i)
        EXPECT_LE(texts->localizedCompare(words[i - 1], words[i]), 0) << i;
}

TEST(IcuTextServices, NamesThatOnlyLookAlikeKeepTheirOrder)
{
    const auto texts = inLocale("en_US.UTF-8");
    // Composed and decomposed: equal to the collation, different bytes.
    const Words words{"e\xCC\x81", "\xC3\xA9", "e\xCC\x81"};
    ASSERT_EQ(texts->localizedCompare(words[0], words[1]), 0);
    auto sorted = words;
    texts->sortLocalized(sorted);
    EXPECT_EQ(sorted, words);
}

TEST(IcuTextServices, AHundredThousandNamesSortInASecondsTime)
{
    const auto texts = inLocale("en_US.UTF-8");
    std::mt19937 random(1);
    Words words;
    for (int i = 0; i < 100000; ++i)
        words.push_back("Server " + std::to_string(random() % 1000000) + " Köln");
    const auto start = std::chrono::steady_clock::now();
    texts->sortLocalized(words);
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(std::is_sorted(words.begin(), words.end(),
        [&](const auto& a, const auto& b) { return texts->localizedCompare(a, b) < 0; }));
    // Generous: a machine under load, a sanitizer's build.
    EXPECT_LT(took, std::chrono::seconds(20));
}

TEST(IcuTextServices, AHostilePageEndsTheSearch)
{
    const IcuTextServices texts;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(texts.firstMatch("(a+)+$", std::string(5000, 'a') + "b"), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST(IcuTextServices, APageOf16MebibytesIsSearched)
{
    const IcuTextServices texts;
    const std::string row = "<tr><td>Current Version</td><td>";
    std::string page;
    while (page.size() < (std::size_t{16} << 20) - 100)
        page += "<tr><td>Build</td><td>1</td></tr>\n";
    page += row + "7.8";
    EXPECT_EQ(texts.firstMatch(R"((?<=<tr><td>Current Version<\/td><td>)[^<\/td>]+)", page), "7.8");
}

} // namespace
} // namespace zarn::linux_backend
