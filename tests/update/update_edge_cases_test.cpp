// SPDX-License-Identifier: MIT
#include "tests/update/version_check_fixture.h"

namespace zarn {
namespace {

class UpdateCheckEdgeCases : public VersionCheckTest {
protected:
    const std::string page
        = "<html><table>\n<tr><td>Current Version</td><td>1.10.0</td></tr>\n</table></html>";
};

TEST_F(UpdateCheckEdgeCases, APageThatPublishes1_10_0IsAnUpdateFor1_9_0)
{
    EXPECT_EQ(resultOf(page, "1.9.0"), true);
}

TEST_F(UpdateCheckEdgeCases, APageThatPublishes1_10_0IsNoUpdateFor1_10_0)
{
    EXPECT_EQ(resultOf(page, "1.10.0"), false);
}

TEST_F(UpdateCheckEdgeCases, APageThatPublishes1_10_0IsNoUpdateFor1_11_0)
{
    EXPECT_EQ(resultOf(page, "1.11.0"), false);
}

TEST_F(UpdateCheckEdgeCases, APageThatAnswers404IsNoUpdateAndNoError)
{
    EXPECT_EQ(resultOf(page, "1.9.0", 404), false);
}

using UpdateCheckEdgeCasesDeathTest = UpdateCheckEdgeCases;

TEST_F(UpdateCheckEdgeCasesDeathTest, AVersionOfTwoPiecesOfItsOwnStopsTheApplication)
{
    (*bundle.info)["CFBundleShortVersionString"] = "1.2";
    EXPECT_DEATH(check(), "fatal: malformed application version 1.2");
}

} // namespace
} // namespace zarn
