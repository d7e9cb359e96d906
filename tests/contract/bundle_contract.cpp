// SPDX-License-Identifier: MIT
#include "tests/contract/bundle_contract.h"

#include <regex>

namespace zarn {
namespace {

TEST_P(BundleContract, TheTextsThatTheProgramNeedsAreThere)
{
    ASSERT_NE(bundle->infoDictionary(), nullptr);
    const auto& info = *bundle->infoDictionary();
    EXPECT_EQ(stringMember(info, "CFBundleExecutable"), "zarn-actions");
    EXPECT_NE(stringMember(info, "CFBundleVersion").value_or(""), "");
}

TEST_P(BundleContract, TheVersionHasThreeNumbersAndMayBeABeta)
{
    ASSERT_NE(bundle->infoDictionary(), nullptr);
    const auto version = stringMember(*bundle->infoDictionary(), "CFBundleShortVersionString");
    ASSERT_TRUE(version);
    EXPECT_TRUE(std::regex_match(*version, std::regex("[0-9]+\\.[0-9]+\\.[0-9]+(b[0-9]+)?")))
        << *version;
}

TEST_P(BundleContract, TheDictionaryStaysWhereItIs)
{
    EXPECT_EQ(bundle->infoDictionary(), bundle->infoDictionary());
}

} // namespace
} // namespace zarn
