// SPDX-License-Identifier: MIT
#include "tests/support/version_pairs.h"

#include "tests/update/version_check_fixture.h"

#include <algorithm>

namespace zarn {
namespace {

class VersionPairsTest : public VersionCheckTest {
protected:
    /// Whether the check would stop the process over a version of its own like this.
    static bool isOwnVersion(const std::string& text)
    {
        return text.find_first_not_of("0123456789.b") == std::string::npos
            && std::count(text.begin(), text.end(), '.') == 2
            && text.find("..") == std::string::npos && text.front() != '.' && text.back() != '.'
            && std::count(text.begin(), text.end(), 'b') <= 1
            && text.find('b') > text.rfind('.') + 1 && text.size() < 20;
    }
};

TEST_F(VersionPairsTest, EveryPairComparesAsTheTableSays)
{
    for (const auto& pair : versionPairs)
        EXPECT_EQ(texts.numericCompare(pair.a, pair.b), pair.order) << pair.a << " | " << pair.b;
}

TEST_F(VersionPairsTest, EveryPairChangedRoundComparesTheOtherWay)
{
    for (const auto& pair : versionPairs)
        EXPECT_EQ(texts.numericCompare(pair.b, pair.a), -pair.order) << pair.b << " | " << pair.a;
}

TEST_F(VersionPairsTest, RunsOfDigitsOfAnyLengthCompareByValue)
{
    for (std::size_t length = 1; length <= 2000; length += length < 50 ? 1 : 97) {
        const std::string nines(length, '9');
        const auto power = "1" + std::string(length, '0');
        const auto padded = std::string(length, '0') + nines;
        EXPECT_EQ(texts.numericCompare(nines, power), -1) << length;
        EXPECT_EQ(texts.numericCompare("1." + power + ".0", "1." + nines + ".9"), 1) << length;
        EXPECT_EQ(texts.numericCompare(padded, nines), 0) << length;
        EXPECT_EQ(texts.numericCompare(padded + "1", nines + "2"), -1) << length;
    }
}

TEST_F(VersionPairsTest, APublishedVersionIsAnUpdateExactlyWhenItComparesAfterTheOwn)
{
    int checked = 0;
    for (const auto& pair : versionPairs) {
        const std::string published = pair.a;
        if (!isOwnVersion(pair.b) || published.empty()
            || published.find_first_of("<\\/td>") != std::string::npos)
            continue;
        ++checked;
        EXPECT_EQ(resultOf(row + published + "</td></tr>", pair.b), pair.order > 0)
            << published << " for " << pair.b;
    }
    EXPECT_GE(checked, 80);
}

} // namespace
} // namespace zarn
