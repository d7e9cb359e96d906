// SPDX-License-Identifier: MIT
#include "tests/contract/file_manager_contract.h"

#include <algorithm>

namespace zarn {
namespace {

using Names = std::vector<std::string>;

TEST_F(FileManagerContract, TheHomeDirectoryHasNoSlashAtItsEnd)
{
    EXPECT_TRUE(home.starts_with('/'));
    EXPECT_FALSE(home.ends_with('/'));
}

TEST_F(FileManagerContract, AFileExistsOnceItIsCreated)
{
    EXPECT_FALSE(files.fileExists(home + "/file"));
    EXPECT_TRUE(files.createFile(home + "/file"));
    EXPECT_TRUE(files.fileExists(home + "/file"));
    EXPECT_EQ(contentsOf(home + "/file"), "");
}

TEST_F(FileManagerContract, CreatingMakesTheFoldersAbove)
{
    EXPECT_TRUE(files.createFile(home + "/Library/Logs/file"));
    EXPECT_TRUE(files.fileExists(home + "/Library/Logs/file"));
    EXPECT_TRUE(files.fileExists(home + "/Library/Logs"));
    EXPECT_TRUE(files.fileExists(home + "/Library/Logs/"));
}

TEST_F(FileManagerContract, CreatingAFileThatExistsEmptiesIt)
{
    files.createFile(home + "/file");
    append(home + "/file", "old");
    EXPECT_TRUE(files.createFile(home + "/file"));
    EXPECT_EQ(contentsOf(home + "/file"), "");
}

TEST_F(FileManagerContract, WhatIsWrittenAtTheEndStaysBehindTheRest)
{
    files.createFile(home + "/file");
    append(home + "/file", "one\n");
    append(home + "/file", std::string("two\0\xff\n", 6));
    EXPECT_EQ(contentsOf(home + "/file"), std::string("one\ntwo\0\xff\n", 10));
}

TEST_F(FileManagerContract, AMissingFileOrTheEmptyPathCannotBeOpened)
{
    EXPECT_EQ(files.openForUpdating(home + "/missing"), nullptr);
    EXPECT_EQ(files.openForUpdating(""), nullptr);
    EXPECT_FALSE(files.fileExists(home + "/missing"));
    EXPECT_FALSE(files.fileExists(""));
}

TEST_F(FileManagerContract, AFolderListsItsNamesOnly)
{
    for (const char* name : {"/logs/b", "/logs/a", "/logs/.hidden", "/logs/sub/c"})
        files.createFile(home + name);
    auto names = files.contentsOfDirectory(home + "/logs/");
    ASSERT_TRUE(names);
    std::sort(names.value().begin(), names.value().end());
    EXPECT_EQ(names.value(), (Names{".hidden", "a", "b", "sub"}));
}

TEST_F(FileManagerContract, AMissingFolderCannotBeListed)
{
    const auto names = files.contentsOfDirectory(home + "/missing");
    ASSERT_FALSE(names);
    EXPECT_NE(names.error().message, "");
}

TEST_F(FileManagerContract, ARemovedFileIsGone)
{
    files.createFile(home + "/file");
    EXPECT_TRUE(files.removeItem(home + "/file").ok());
    EXPECT_FALSE(files.fileExists(home + "/file"));
}

TEST_F(FileManagerContract, AFolderIsRemovedWithAllThatIsInIt)
{
    files.createFile(home + "/logs/sub/c");
    files.createFile(home + "/logs2");
    EXPECT_TRUE(files.removeItem(home + "/logs").ok());
    EXPECT_FALSE(files.fileExists(home + "/logs/sub/c"));
    EXPECT_FALSE(files.fileExists(home + "/logs"));
    EXPECT_TRUE(files.fileExists(home + "/logs2"));
}

TEST_F(FileManagerContract, RemovingNothingIsAnErrorWithAText)
{
    const auto removed = files.removeItem(home + "/missing");
    ASSERT_FALSE(removed);
    EXPECT_EQ(removed.error().code, ErrorCode::NotFound);
    EXPECT_NE(removed.error().message, "");
}

} // namespace
} // namespace zarn
