// SPDX-License-Identifier: MIT
#include "tests/update/version_check_fixture.h"

namespace zarn {
namespace {

TEST_F(VersionCheckTest, TheRequestIsAPlainGetThatAcceptsEveryCertificate)
{
    check();
    ASSERT_EQ(sessions.requests.size(), 1U);
    const auto& request = sessions.requests[0];
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.url, pageUrl);
    EXPECT_TRUE(request.headers.empty());
    EXPECT_EQ(request.body, std::nullopt);
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_EQ(request.storage, UrlSessionConfiguration::Storage::Default);
    EXPECT_EQ(request.trust, ServerTrust::AcceptAny);
    EXPECT_EQ(events, (std::vector<std::string>{"empty the URL cache", "request GET " + pageUrl}));
}

TEST_F(VersionCheckTest, NoResponseTellsNobody)
{
    sessions.replyNothing();
    EXPECT_EQ(run(), std::nullopt);
}

TEST_F(VersionCheckTest, ABodyThatIsNotUtf8IsNoUpdate)
{
    EXPECT_EQ(resultOf("\xFF" + row + "9.9.9</td>"), false);
}

TEST_F(VersionCheckTest, APageWithoutTheRowIsNoUpdate)
{
    EXPECT_EQ(resultOf(""), false);
    EXPECT_EQ(resultOf("<tr> <td>Current Version</td><td>9.9.9</td></tr>"), false);
    EXPECT_EQ(resultOf("<tr><td>Current Version</td> <td>9.9.9</td></tr>"), false);
    EXPECT_EQ(resultOf(row), false);
}

TEST_F(VersionCheckTest, TheFirstRowWithAnAllowedCharacterCounts)
{
    EXPECT_EQ(resultOf(row + "</td></tr>" + row + "1.0.0</td>" + row + "9.0.0</td>"), false);
    EXPECT_EQ(resultOf(row + "</td></tr>" + row + "9.0.0</td>" + row + "1.0.0</td>"), true);
}

TEST_F(VersionCheckTest, APublishedVersionIsCutAtItsFirstTOrD)
{
    EXPECT_EQ(resultOf(row + "1.9.0-t5</td>", "1.9.0"), true) << "1.9.0- is after 1.9.0";
    EXPECT_EQ(resultOf(row + "1.9t99</td>", "1.9.0"), false) << "1.9 is before 1.9.0";
    EXPECT_EQ(resultOf(row + "2d</td>", "1.9.0"), true);
    EXPECT_EQ(resultOf(row + "t9.9.9</td>", "1.0.0"), false);
}

TEST_F(VersionCheckTest, ABetaComparesAsText)
{
    EXPECT_EQ(resultOf(row + "1.5.0b3</td>", "1.5.0b2"), true);
    EXPECT_EQ(resultOf(row + "1.5.0b10</td>", "1.5.0b9"), true);
    EXPECT_EQ(resultOf(row + "1.5.0</td>", "1.5.0b2"), false);
    EXPECT_EQ(resultOf(row + "1.5.0b2</td>", "1.5.0"), true);
}

TEST_F(VersionCheckTest, APublishedVersionIsAnUpdateExactlyWhenItComparesAfterTheOwn)
{
    const std::vector<std::string> ascending{"0.9.9", "0.10.0", "1.0.9", "1.0.10", "1.5.0",
        "1.5.0b", "1.5.0b9", "1.5.0b10", "1.5.1", "1.9.0", "1.10.0", "9.9.9", "10.0.0"};
    for (std::size_t published = 0; published < ascending.size(); ++published) {
        for (std::size_t own = 0; own < ascending.size(); ++own)
            EXPECT_EQ(resultOf(row + ascending[published] + "</td></tr>", ascending[own]),
                published > own)
                << ascending[published] << " for " << ascending[own];
    }
}

TEST_F(VersionCheckTest, ParsesItsOwnVersion)
{
    EXPECT_EQ(parseAppVersion("1.4.2"), (AppVersion{1, 4, 2, false, 0}));
    EXPECT_EQ(parseAppVersion("1.5.0b3"), (AppVersion{1, 5, 0, true, 3}));
    EXPECT_EQ(parseAppVersion("1.5.0B3"), (AppVersion{1, 5, 0, true, 3}));
    EXPECT_EQ(parseAppVersion("1.5.0b"), (AppVersion{1, 5, 0, false, 0}));
    EXPECT_EQ(parseAppVersion("1..5.0"), (AppVersion{1, 5, 0, false, 0}));
    EXPECT_EQ(parseAppVersion("10.20.30.40"), (AppVersion{10, 20, 30, false, 0}));
    EXPECT_EQ(parseAppVersion("+1.-2.3b+4"), (AppVersion{1, -2, 3, true, 4}));
}

TEST_F(VersionCheckTest, EveryStatusOutsideTheTwoHundredsIsNoUpdate)
{
    for (const int status : {100, 199, 300, 301, 400, 404, 500, 599})
        EXPECT_EQ(resultOf(row + "9.9.9</td>", "1.0.0", status), false) << status;
    for (const int status : {200, 204, 299})
        EXPECT_EQ(resultOf(row + "9.9.9</td>", "1.0.0", status), true) << status;
}

TEST_F(VersionCheckTest, ABackslashIsPartOfAPublishedVersion)
{
    EXPECT_EQ(resultOf(row + "1.9.0\\x</td>", "1.9.0"), true);
}

TEST_F(VersionCheckTest, EachCharacterOfTheClosingTagEndsThePublishedVersion)
{
    for (const char* end : {"<", "/", "t", "d", ">"})
        EXPECT_EQ(resultOf(row + "1.9.0" + end + "9.9.9", "1.9.0"), false) << end;
}

TEST_F(VersionCheckTest, EachCheckEmptiesTheCacheAndMakesASessionOfItsOwn)
{
    check();
    check();
    EXPECT_EQ(sessions.cacheClears, 2);
    EXPECT_EQ(sessions.sessionsMade, 2);
}

TEST_F(VersionCheckTest, TheSessionIsNotInvalidatedAndTheVersionIsTheOneAtTheStart)
{
    std::vector<bool> answers;
    VersionCheck versionCheck({sessions, bundle, texts, pageUrl});
    (*bundle.info)["CFBundleShortVersionString"] = "1.9.0";
    sessions.reply(200, row + "1.10.0</td>");
    versionCheck.checkForUpdate([&](bool isNewer) { answers.push_back(isNewer); });
    (*bundle.info)["CFBundleShortVersionString"] = "2.0.0";
    sessions.deliverAll();
    EXPECT_EQ(answers, std::vector<bool>{true});
    EXPECT_EQ(sessions.sessionsInvalidated, 0);
}

using VersionCheckDeathTest = VersionCheckTest;

TEST_F(VersionCheckDeathTest, AMalformedVersionOfItsOwnStopsTheProcess)
{
    for (const char* version : {"1.2", "", "1", "1.2.", "1.2.b", "x.2.3", "1.x.3", "1.2.x",
             "1.2.3bx", "1.2.99999999999999999999", "1.2.3 ", "+-1.2.3", "1.++2.3", "1.2.+"}) {
        (*bundle.info)["CFBundleShortVersionString"] = version;
        EXPECT_DEATH(check(),
            testing::Eq("zarn-actions: fatal: malformed application version " + std::string(version)
                + "\n"));
    }
}

TEST_F(VersionCheckDeathTest, AMissingVersionOrMalformedPageStopsTheProcess)
{
    pageUrl = "https://zarn actions";
    EXPECT_DEATH(check(), "fatal: malformed update-check page address\n");
    // The version is looked at first.
    (*bundle.info)["CFBundleShortVersionString"] = "1.2";
    EXPECT_DEATH(check(), "fatal: malformed application version 1.2\n");
    bundle.info.reset();
    EXPECT_DEATH(check(), "fatal: the information dictionary has no CFBundleShortVersionString\n");
}

// --- Edge cases

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
    EXPECT_DEATH(check(), "fatal: malformed application version 1.2\n");
}

} // namespace
} // namespace zarn
