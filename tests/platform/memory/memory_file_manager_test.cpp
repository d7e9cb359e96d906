// SPDX-License-Identifier: MIT
#include "platform/memory/memory_file_manager.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zarn::memory {
namespace {

class MemoryFileManagerTest : public testing::Test {
protected:
    std::vector<std::string> events;
    MemoryFileManager files{events};
};

TEST_F(MemoryFileManagerTest, RecordsWhatChangesOrListsInOrder)
{
    EXPECT_TRUE(files.createFile("/a/b"));
    EXPECT_TRUE(files.contentsOfDirectory("/a").ok());
    EXPECT_TRUE(files.removeItem("/a/b").ok());
    EXPECT_EQ(events, (std::vector<std::string>{"create /a/b", "list /a", "remove /a/b"}));
}

TEST_F(MemoryFileManagerTest, FailsWhereItIsToldTo)
{
    files.files["/a/b"] = "kept";
    files.listingFails = true;
    EXPECT_EQ(files.contentsOfDirectory("/a").error().code, ErrorCode::Io);
    files.openingFails = true;
    EXPECT_EQ(files.openForUpdating("/a/b"), nullptr);
    files.creatingFails = true;
    EXPECT_FALSE(files.createFile("/a/c"));
    files.stuck["/a/b"] = "in use";
    EXPECT_EQ(files.removeItem("/a/b").error().message, "in use");
    EXPECT_EQ(files.files, (std::map<std::string, std::string>{{"/a/b", "kept"}}));
}

TEST_F(MemoryFileManagerTest, ListsFilesAndFoldersOnceAndNothingBelow)
{
    files.files["/a/b"] = "";
    files.files["/a/c/d"] = "";
    files.files["/a/c/e"] = "";
    files.folders.insert("/a/f/");
    files.files["/ab"] = "";
    auto names = files.contentsOfDirectory("/a/").value();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"b", "c", "f"}));
    EXPECT_TRUE(files.fileExists("/a/c"));
    EXPECT_FALSE(files.fileExists("/a/d"));
}

TEST_F(MemoryFileManagerTest, AFileThatIsMissingIsNeitherOpenedNorRemoved)
{
    EXPECT_EQ(files.openForUpdating("/a/b"), nullptr);
    EXPECT_EQ(files.openForUpdating(""), nullptr);
    EXPECT_EQ(files.removeItem("/a/b").error().code, ErrorCode::NotFound);
    EXPECT_FALSE(files.contentsOfDirectory("/a").ok());
}

TEST_F(MemoryFileManagerTest, AHandleOutlivesTheFileItWasOpenedFor)
{
    files.files["/a"] = "x";
    const auto handle = files.openForUpdating("/a");
    EXPECT_TRUE(files.removeItem("/a").ok());
    handle->seekToEndOfFile();
    handle->writeData("lost");
    EXPECT_TRUE(files.files.empty());
}

TEST_F(MemoryFileManagerTest, RemovingAFolderRemovesWhatIsInIt)
{
    files.files["/a/b/c"] = "";
    files.files["/a/bc"] = "";
    files.folders.insert("/a/b/d/");
    EXPECT_TRUE(files.removeItem("/a/b").ok());
    EXPECT_EQ(files.files, (std::map<std::string, std::string>{{"/a/bc", ""}}));
    EXPECT_TRUE(files.folders.empty());
}

} // namespace
} // namespace zarn::memory
