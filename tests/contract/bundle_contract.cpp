// SPDX-License-Identifier: MIT
#include "tests/contract/bundle_contract.h"

#include <algorithm>
#include <string_view>

namespace zarn {
namespace {

bool takeNumber(std::string_view& text)
{
    const auto digits = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(digits);
    return digits > 0;
}

bool take(std::string_view& text, char expected)
{
    if (!text.starts_with(expected))
        return false;
    text.remove_prefix(1);
    return true;
}

bool isVersion(std::string_view text)
{
    return takeNumber(text) && take(text, '.') && takeNumber(text) && take(text, '.')
        && takeNumber(text)
        && (text.empty() || (take(text, 'b') && takeNumber(text) && text.empty()));
}

TEST_F(BundleContract, TheTextsThatTheProgramNeedsAreThere)
{
    ASSERT_NE(bundle->infoDictionary(), nullptr);
    const auto& info = *bundle->infoDictionary();
    EXPECT_EQ(stringMember(info, "CFBundleExecutable"), "zarn-actions");
    EXPECT_NE(stringMember(info, "CFBundleVersion").value_or(""), "");
}

TEST_F(BundleContract, TheVersionHasThreeNumbersAndMayBeABeta)
{
    ASSERT_NE(bundle->infoDictionary(), nullptr);
    const auto version = stringMember(*bundle->infoDictionary(), "CFBundleShortVersionString");
    ASSERT_TRUE(version);
    EXPECT_TRUE(isVersion(*version)) << *version;
    for (const auto* const other : {"", "1", "1.2", "1.2.", "1..2", "1.2.3b", "1.2.3b4c", "v1.2.3"})
        EXPECT_FALSE(isVersion(other)) << other;
}

TEST_F(BundleContract, TheDictionaryStaysWhereItIs)
{
    EXPECT_EQ(bundle->infoDictionary(), bundle->infoDictionary());
}

} // namespace
} // namespace zarn
