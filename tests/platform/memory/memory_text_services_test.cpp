// SPDX-License-Identifier: MIT
#include "platform/memory/memory_text_services.h"

#include <gtest/gtest.h>

namespace zarn::memory {
namespace {

class MemoryTextServicesTest : public testing::Test {
protected:
    std::optional<std::string> match(std::string_view text) const
    {
        return texts.firstMatch("(?<=<b>A<\\/b>)[^<\\/td>]+", text);
    }
    MemoryTextServices texts;
};

TEST_F(MemoryTextServicesTest, LettersCompareByTheAlphabetAndThenLowerCaseFirst)
{
    const struct {
        const char* a;
        const char* b;
        int order;
    } rows[] = {{"a", "B", -1}, {"B", "a", 1}, {"a", "A", -1}, {"A", "a", 1}, {"a", "a", 0},
        {"aB", "Ab", -1}, {"ab", "aB", -1}, {"Ab", "aC", -1}, {"", "a", -1}, {"a", "ab", -1},
        {"1", "a", -1}, {"", "", 0}};
    for (const auto& row : rows)
        EXPECT_EQ(texts.localizedCompare(row.a, row.b), row.order) << row.a << " | " << row.b;
}

TEST_F(MemoryTextServicesTest, SortsByThatOrder)
{
    std::vector<std::string> names{"beta", "Alpha", "alpha", "Beta", "2", "10"};
    texts.sortLocalized(names);
    EXPECT_EQ(names, (std::vector<std::string>{"10", "2", "alpha", "Alpha", "beta", "Beta"}));
}

TEST_F(MemoryTextServicesTest, MatchesWhatFollowsTheLiteralUpToAnExcludedCharacter)
{
    EXPECT_EQ(match("x<b>A</b>1.2</b>"), "1.2");
    EXPECT_EQ(match("<b>A</b>1.2"), "1.2");
    EXPECT_EQ(match("<b>A</b>\\1"), "\\1");
    EXPECT_EQ(match("<b>A</b>a\nb"), "a\nb");
    EXPECT_EQ(match("<b>A</b>"), std::nullopt);
    EXPECT_EQ(match("<b>a</b>1"), std::nullopt);
    EXPECT_EQ(match(""), std::nullopt);
}

TEST_F(MemoryTextServicesTest, SkipsOccurrencesThatNothingAllowedFollows)
{
    EXPECT_EQ(match("<b>A</b>t<b>A</b><b>A</b>7<b>A</b>8"), "7");
}

TEST_F(MemoryTextServicesTest, ADifferentPatternMatchesNothing)
{
    for (const char* pattern : {"", "a", "(?<=a)b+", "[^a]+", "(?<=a)[^b]", "(?<=a"})
        EXPECT_EQ(texts.firstMatch(pattern, "aaabbb"), std::nullopt) << pattern;
}

} // namespace
} // namespace zarn::memory
