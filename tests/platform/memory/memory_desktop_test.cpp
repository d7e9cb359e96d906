// SPDX-License-Identifier: MIT
#include "platform/memory/memory_desktop.h"

#include <gtest/gtest.h>

namespace zarn::memory {
namespace {

TEST(MemoryBundle, MayHaveNoInformationDictionary)
{
    MemoryBundle bundle;
    ASSERT_TRUE(bundle.infoDictionary());
    EXPECT_EQ(stringMember(*bundle.infoDictionary(), "CFBundleExecutable"), "zarn-actions");
    bundle.info.reset();
    EXPECT_EQ(bundle.infoDictionary(), nullptr);
}

TEST(MemoryConsole, RecordsLines)
{
    MemoryConsole console;
    console.writeLine("one");
    console.writeLine("");
    EXPECT_EQ(console.lines, (std::vector<std::string>{"one", ""}));
}

TEST(MemoryWorkspace, RecordsWhatItOpens)
{
    MemoryWorkspace workspace;
    workspace.openUrl(*Url::fromText("https://zarn.example/a"));
    workspace.openFolder("/home/test/Library/Logs/");
    EXPECT_EQ(workspace.openedUrls, std::vector<std::string>{"https://zarn.example/a"});
    EXPECT_EQ(workspace.openedFolders, std::vector<std::string>{"/home/test/Library/Logs/"});
}

TEST(MemoryNotificationCenter, AHandlerMayRemoveItselfWhileItRuns)
{
    MemoryNotificationCenter center;
    int calls = 0;
    center.addObserver(&calls, "changed", [&] {
        ++calls;
        center.removeObserver(&calls, "changed");
    });
    center.post("another name");
    EXPECT_EQ(calls, 0);
    center.post("changed");
    center.post("changed");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(center.observerCount(), 0U);
    EXPECT_EQ(center.removals, std::vector<std::string>{"changed"});
}

} // namespace
} // namespace zarn::memory
