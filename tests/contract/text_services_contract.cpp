// SPDX-License-Identifier: MIT
#include "tests/contract/text_services_contract.h"

#include "tests/support/version_pairs.h"

namespace zarn {
namespace {

using Words = std::vector<std::string>;

constexpr auto versionRow = R"((?<=<tr><td>Current Version<\/td><td>)[^<\/td>]+)";

int sign(int value)
{
    return value < 0 ? -1 : value > 0 ? 1 : 0;
}

TEST_P(TextServicesContract, LettersGoBeforeTheirCase)
{
    EXPECT_LT(texts->localizedCompare("Alpha", "beta"), 0);
    EXPECT_LT(texts->localizedCompare("alpha", "Beta"), 0);
    EXPECT_GT(texts->localizedCompare("Zeta", "alpha"), 0);
    EXPECT_LT(texts->localizedCompare("alpha", "Alpha"), 0);
    EXPECT_EQ(texts->localizedCompare("Alpha", "Alpha"), 0);
}

TEST_P(TextServicesContract, BetaAlphaAndAlphaAreNotInByteOrder)
{
    EXPECT_EQ(sorted({"beta", "Alpha", "alpha"}), (Words{"alpha", "Alpha", "beta"}));
}

TEST_P(TextServicesContract, ATextGoesBehindWhatItBeginsWith)
{
    EXPECT_LT(texts->localizedCompare("server", "server 2"), 0);
    EXPECT_LT(texts->localizedCompare("", "a"), 0);
    EXPECT_EQ(texts->localizedCompare("", ""), 0);
}

TEST_P(TextServicesContract, SortingNothingOrOneTextIsAllowed)
{
    EXPECT_EQ(sorted({}), Words{});
    EXPECT_EQ(sorted({"b"}), Words{"b"});
}

TEST_P(TextServicesContract, EqualTextsAllStay)
{
    EXPECT_EQ(sorted({"b", "a", "b", "a"}), (Words{"a", "a", "b", "b"}));
}

TEST_P(TextServicesContract, NumbersCompareByValue)
{
    for (const auto& pair : versionPairs) {
        SCOPED_TRACE(std::string(pair.a) + " and " + pair.b);
        EXPECT_EQ(sign(texts->numericCompare(pair.a, pair.b)), pair.order);
        EXPECT_EQ(sign(texts->numericCompare(pair.b, pair.a)), -pair.order);
    }
}

TEST_P(TextServicesContract, NumbersOfAMillionDigitsCompare)
{
    const std::string nines(1000000, '9');
    EXPECT_LT(texts->numericCompare(nines, "1" + std::string(1000000, '0')), 0);
    EXPECT_EQ(texts->numericCompare(nines, "0" + nines), 0);
}

TEST_P(TextServicesContract, ThePublishedVersionIsFoundInItsRow)
{
    EXPECT_EQ(texts->firstMatch(
                  versionRow, "<table><tr><td>Current Version</td><td>1.5.0</td></tr></table>"),
        "1.5.0");
}

TEST_P(TextServicesContract, AVersionEndsAtALetterOfTheClosingTag)
{
    EXPECT_EQ(texts->firstMatch(versionRow, "<tr><td>Current Version</td><td>1.5beta2"), "1.5be");
    EXPECT_EQ(texts->firstMatch(versionRow, "<tr><td>Current Version</td><td>1.5d2"), "1.5");
}

TEST_P(TextServicesContract, TheFirstRowThatHasAVersionCounts)
{
    EXPECT_EQ(texts->firstMatch(versionRow,
                  "<tr><td>Current Version</td><td></td>"
                  "<tr><td>Current Version</td><td>2</td><tr><td>Current Version</td><td>3"),
        "2");
}

TEST_P(TextServicesContract, ARowThatReadsOtherwiseDoesNotMatch)
{
    for (const char* page : {"", "<tr><td>Current version</td><td>1.5.0</td>",
             "<tr> <td>Current Version</td><td>1.5.0</td>", "<tr><td>Current Version</td><td>",
             "<tr><td>Current Version</td><td></td>"})
        EXPECT_EQ(texts->firstMatch(versionRow, page), std::nullopt) << page;
}

TEST_P(TextServicesContract, AMalformedPatternMatchesNothing)
{
    EXPECT_EQ(texts->firstMatch("(?<=", "anything"), std::nullopt);
    EXPECT_EQ(texts->firstMatch("[", "["), std::nullopt);
}

TEST_P(TextServicesContract, TextAroundTheMatchMayBeOfAnyScript)
{
    EXPECT_EQ(
        texts->firstMatch(versionRow, "größe 😀<tr><td>Current Version</td><td>1.5 für 日本</td>"),
        "1.5 für 日本");
}

} // namespace
} // namespace zarn
