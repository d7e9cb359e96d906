// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/desktop_workspace.h"
#include "tests/support/fake_file_manager.h"
#include "tests/support/fake_opener.h"

namespace zarn::linux_backend {
namespace {

using Texts = std::vector<std::string>;

const auto* const environment = testing::AddGlobalTestEnvironment(new QtEnvironment);

class DesktopWorkspaceTest : public testing::Test {
protected:
    void openUrl(const std::string& address)
    {
        const auto url = Url::fromText(address);
        ASSERT_TRUE(url) << address;
        workspace.openUrl(*url);
    }
    FakeOpener opener;
    DesktopWorkspace workspace;
};

TEST_F(DesktopWorkspaceTest, OnlyWebAddressesAreOpened)
{
    for (const std::string address : {"file:///etc/passwd", "javascript:alert(1)", "zarn.example",
             "/etc/passwd", "ftp://a.example", "-version", "mailto:a@a.example",
             "httpsx://a.example", ":https://a.example"})
        openUrl(address);
    openUrl("https://last.example/");
    EXPECT_EQ(opener.waitForCalls(1), Texts{"1 https://last.example/"});
}

TEST_F(DesktopWorkspaceTest, PlainHttpIsOpenedToo)
{
    openUrl("http://a.example/");
    EXPECT_EQ(opener.waitForCalls(1), Texts{"1 http://a.example/"});
}

TEST_F(DesktopWorkspaceTest, ASchemeInCapitalsIsTheSameScheme)
{
    openUrl("HTTPS://a.example/X");
    EXPECT_EQ(opener.waitForCalls(1), Texts{"1 https://a.example/X"});
}

TEST_F(DesktopWorkspaceTest, AnAddressBeyondAsciiIsEncoded)
{
    openUrl("https://a.example/\xc3\xa4$(id);'x'");
    const auto calls = opener.waitForCalls(1);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_TRUE(calls[0].starts_with("1 https://a.example/%C3%A4$(id);")) << calls[0];
}

TEST_F(DesktopWorkspaceTest, WithAFileManagerTheOpenerIsNotAsked)
{
    FakeFileManager fileManager;
    ASSERT_TRUE(fileManager.isReady());
    workspace.openFolder("/home/a/Library/Logs");
    ASSERT_TRUE(runEventsUntil([&] { return !fileManager.folders.empty(); }));
    openUrl("https://later.example/");
    EXPECT_EQ(opener.waitForCalls(1), Texts{"1 https://later.example/"});
    EXPECT_EQ(fileManager.folders, Texts{"/home/a/Library/Logs"});
}

TEST_F(DesktopWorkspaceTest, WithoutAFileManagerTheOpenerOpensTheFolder)
{
    workspace.openFolder("/home/a user/Library/Logs");
    EXPECT_EQ(opener.waitForCalls(1), Texts{"1 file:///home/a%20user/Library/Logs"});
}

TEST_F(DesktopWorkspaceTest, AFileManagerThatRefusesLeavesItToTheOpener)
{
    FakeFileManager fileManager(FakeFileManager::Manner::Refuses);
    workspace.openFolder("/home/a/Library/Logs");
    EXPECT_EQ(opener.waitForCalls(1), Texts{"1 file:///home/a/Library/Logs"});
    EXPECT_EQ(fileManager.folders, Texts{});
}

} // namespace
} // namespace zarn::linux_backend
