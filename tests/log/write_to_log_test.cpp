// SPDX-License-Identifier: MIT
#include "log/write_to_log.h"

#include "platform/memory/memory_clock.h"
#include "platform/memory/memory_file_manager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace zarn {
namespace {

const std::string folder = "/home/test/Library/Logs/";
const std::string firstName = "20250301_101500_zarn-shortcuts.log";

class WriteToLogTest : public testing::Test {
protected:
    void fill(int count, const std::string& prefix = "20240101_0000")
    {
        for (int i = 0; i < count; ++i)
            files.files[folder + prefix + (i < 10 ? "0" : "") + std::to_string(i) + ".log"] = "old";
    }
    std::vector<std::string> removed() const
    {
        std::vector<std::string> paths;
        for (const auto& event : events) {
            if (event.starts_with("remove "))
                paths.push_back(event.substr(7));
        }
        return paths;
    }

    std::vector<std::string> events;
    memory::MemoryFileManager files{events};
    memory::MemoryClock clock;
    memory::MemoryDateFormatter dates;
    LogFile file{{files, clock, dates}};
    WriteToLog log{file};
};

TEST_F(WriteToLogTest, TheFirstMessageInAFreshFolderStartsAStampedFile)
{
    log.writeEntry("[test] hello");
    ASSERT_EQ(files.files.size(), 1U);
    EXPECT_EQ(files.files.begin()->first, folder + firstName);
    EXPECT_EQ(files.files.begin()->second, "Sat Mar 01 10:15:00 [test] hello\n");
}

TEST_F(WriteToLogTest, TheNameBeforeAnyStartIsPlain)
{
    EXPECT_EQ(file.logFileName(), "zarn-shortcuts.log");
    EXPECT_EQ(file.logFolderPath(), folder);
}

TEST_F(WriteToLogTest, LaterLinesOfTheRunGoToTheSameFile)
{
    log.writeEntry("one");
    clock.time.secondsSince1970 += 3600;
    log.writeEntry("two");
    EXPECT_EQ(
        files.files.at(folder + firstName), "Sat Mar 01 10:15:00 one\nSat Mar 01 11:15:00 two\n");
    EXPECT_EQ(files.files.size(), 1U);
}

TEST_F(WriteToLogTest, AnExistingFileOfThePlainNameIsUsedAsItIs)
{
    files.files[folder + "zarn-shortcuts.log"] = "before\n";
    log.writeEntry("after");
    EXPECT_EQ(files.files.at(folder + "zarn-shortcuts.log"), "before\nSat Mar 01 10:15:00 after\n");
    EXPECT_EQ(file.logFileName(), "zarn-shortcuts.log");
}

TEST_F(WriteToLogTest, DeletingTheFileWhileRunningStacksASecondStamp)
{
    log.writeEntry("one");
    files.files.clear();
    clock.time.secondsSince1970 += 60;
    log.writeEntry("two");
    EXPECT_EQ(file.logFileName(), "20250301_101600_20250301_101500_zarn-shortcuts.log");
    EXPECT_EQ(files.files.at(folder + file.logFileName()), "Sat Mar 01 10:16:00 two\n");
}

TEST_F(WriteToLogTest, EmbeddedNewlinesAreWrittenUnchangedAndOneLineBreakIsAdded)
{
    log.writeEntry("a\n\nb\n");
    EXPECT_EQ(files.files.at(folder + firstName), "Sat Mar 01 10:15:00 a\n\nb\n\n");
}

TEST_F(WriteToLogTest, AnEmptyMessageIsATimestampAndABlank)
{
    log.writeEntry("");
    EXPECT_EQ(files.files.at(folder + firstName), "Sat Mar 01 10:15:00 \n");
}

TEST_F(WriteToLogTest, ALineThatCannotBeWrittenIsLostSilently)
{
    files.creatingFails = true;
    log.writeEntry("lost");
    EXPECT_TRUE(files.files.empty());
    files.creatingFails = false;
    log.writeEntry("found");
    EXPECT_EQ(files.files.size(), 1U);
    EXPECT_EQ(files.files.begin()->second, "Sat Mar 01 10:15:00 found\n");
}

TEST_F(WriteToLogTest, AFolderThatCanNeitherBeListedNorWrittenDoesNotRecurse)
{
    files.creatingFails = true;
    files.listingFails = true;
    log.writeEntry("lost");
    EXPECT_EQ(std::count(events.begin(), events.end(), "list " + folder), 1);
}

TEST_F(WriteToLogTest, TimestampsOfBothKinds)
{
    EXPECT_EQ(file.logTimestamp("file"), "20250301_101500");
    EXPECT_EQ(file.logTimestamp("entry"), "Sat Mar 01 10:15:00");
    EXPECT_EQ(file.logTimestamp("anything else"), "Sat Mar 01 10:15:00");
}

TEST_F(WriteToLogTest, TimestampsFollowTheTimeZone)
{
    dates.secondsFromUtc = 7200;
    EXPECT_EQ(file.logTimestamp("file"), "20250301_121500");
}

TEST_F(WriteToLogTest, FortyTwoEntriesAreAllKept)
{
    fill(41);
    file.startNewLogFile();
    EXPECT_EQ(files.files.size(), 42U);
    EXPECT_TRUE(removed().empty());
}

TEST_F(WriteToLogTest, OfFortyThreeEntriesTheFirstInOrderIsRemoved)
{
    fill(42);
    file.startNewLogFile();
    EXPECT_EQ(removed(), std::vector<std::string>{folder + "20240101_000000.log"});
    EXPECT_EQ(files.files.size(), 42U);
}

TEST_F(WriteToLogTest, OfFiftyEntriesTheFirstEightAreRemovedInOrder)
{
    fill(49);
    file.startNewLogFile();
    const auto paths = removed();
    ASSERT_EQ(paths.size(), 8U);
    for (std::size_t i = 0; i < paths.size(); ++i)
        EXPECT_EQ(paths[i], folder + "20240101_00000" + std::to_string(i) + ".log");
    EXPECT_EQ(files.files.size(), 42U);
}

TEST_F(WriteToLogTest, EveryEntryCountsWhateverItsName)
{
    fill(40);
    files.files[folder + "another program's notes"] = "x";
    files.folders.insert(folder + "0 folder/");
    file.startNewLogFile();
    EXPECT_EQ(removed(), std::vector<std::string>{folder + "0 folder"});
}

TEST_F(WriteToLogTest, NoLogFilesFoundIsWrittenWhenTheFolderCannotBeListed)
{
    files.listingFails = true;
    file.startNewLogFile();
    EXPECT_EQ(files.files.at(folder + firstName), "Sat Mar 01 10:15:00 no log files found\n");
}

TEST_F(WriteToLogTest, AFailedRemovalIsWrittenAndPruningGoesOn)
{
    fill(44);
    const auto stuck = folder + "20240101_000001.log";
    files.stuck[stuck] = "Permission denied";
    file.startNewLogFile();
    EXPECT_EQ(removed().size(), 3U);
    EXPECT_FALSE(files.files.contains(folder + "20240101_000002.log"));
    EXPECT_EQ(files.files.at(folder + firstName),
        "Sat Mar 01 10:15:00 Error deleting log file:\n    " + stuck + "\n    Permission denied\n");
}

TEST_F(WriteToLogTest, AHundredThousandFilesArePrunedToTheLastFortyTwo)
{
    for (int i = 0; i < 100000; ++i)
        files.files[folder + std::to_string(1000000 + i)] = "";
    file.startNewLogFile();
    EXPECT_EQ(files.files.size(), 42U);
    EXPECT_TRUE(files.files.contains(folder + firstName));
    EXPECT_TRUE(files.files.contains(folder + "1099999"));
    EXPECT_FALSE(files.files.contains(folder + "1099958"));
}

TEST_F(WriteToLogTest, TheNameMayBeAskedForWhileAnotherThreadStartsAFile)
{
    std::thread starter([this] {
        for (int i = 0; i < 200; ++i)
            file.startNewLogFile();
    });
    for (int i = 0; i < 200; ++i)
        EXPECT_TRUE(file.logFileName().ends_with("zarn-shortcuts.log"));
    starter.join();
    EXPECT_EQ(file.logFileName().size(), 200 * 16 + std::string("zarn-shortcuts.log").size());
}

} // namespace
} // namespace zarn
