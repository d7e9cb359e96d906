// SPDX-License-Identifier: MIT
#include "tests/log/log_fixture.h"

#include <algorithm>

namespace zarn {
namespace {

using WriteToLogTest = LogTest;

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

/// A clock that is a second later at each look.
class TickingClock final : public Clock {
public:
    Date now() const override { return {m_start.secondsSince1970 + m_looks++}; }

private:
    Date m_start = memory::MemoryClock().now();
    mutable int m_looks = 0;
};

TEST_F(WriteToLogTest, TheLineIsStampedAfterItsFileWasStarted)
{
    TickingClock ticking;
    LogFile later({files, ticking, dates});
    WriteToLog(later).writeEntry("x");
    EXPECT_EQ(files.files.at(folder + firstName), "Sat Mar 01 10:15:01 x\n");
}

TEST_F(WriteToLogTest, TheHomeFolderIsAskedForOnce)
{
    log.writeEntry("one");
    files.home = "/home/other";
    log.writeEntry("two");
    EXPECT_EQ(file.logFolderPath(), folder);
    EXPECT_EQ(files.files.size(), 1U);
}

TEST_F(WriteToLogTest, AFileIsCreatedThenTheFolderListedThenTheOldestRemoved)
{
    fill(43);
    log.writeEntry("x");
    EXPECT_EQ(events,
        (std::vector<std::string>{"create " + folder + firstName, "list " + folder,
            "remove " + folder + "20240101_000000.log",
            "remove " + folder + "20240101_000001.log"}));
}

TEST_F(WriteToLogTest, PruningTakesPlaceEvenWhenTheFileCannotBeCreated)
{
    fill(43);
    files.creatingFails = true;
    log.writeEntry("lost");
    EXPECT_EQ(removed(), std::vector<std::string>{folder + "20240101_000000.log"});
}

TEST_F(WriteToLogTest, AFileThatCannotBeOpenedLosesTheLineOnly)
{
    log.writeEntry("one");
    files.openingFails = true;
    log.writeEntry("lost");
    files.openingFails = false;
    log.writeEntry("two");
    EXPECT_EQ(file.logFileName(), firstName);
    EXPECT_EQ(
        files.files.at(folder + firstName), "Sat Mar 01 10:15:00 one\nSat Mar 01 10:15:00 two\n");
}

TEST_F(WriteToLogTest, EveryLineOpensTheFileAnew)
{
    log.writeEntry("one");
    files.files[folder + firstName] = "another file under the name\n";
    log.writeEntry("two");
    EXPECT_EQ(files.files.at(folder + firstName),
        "another file under the name\nSat Mar 01 10:15:00 two\n");
}

TEST_F(WriteToLogTest, AnInstanceOfItsOwnForEachMessageWritesTheSame)
{
    WriteToLog(file).writeEntry("one");
    WriteToLog(file).writeEntry("two");
    EXPECT_EQ(
        files.files.at(folder + firstName), "Sat Mar 01 10:15:00 one\nSat Mar 01 10:15:00 two\n");
}

TEST_F(WriteToLogTest, EveryFailedRemovalIsWrittenInOrder)
{
    fill(50);
    std::string expected;
    for (const char* name : {"20240101_000000.log", "20240101_000001.log", "20240101_000002.log"}) {
        files.stuck[folder + name] = "stuck";
        expected += "Sat Mar 01 10:15:00 Error deleting log file:\n    " + folder + name
            + "\n    stuck\n";
    }
    log.writeEntry("x");
    EXPECT_EQ(files.files.at(folder + firstName), expected + "Sat Mar 01 10:15:00 x\n");
    EXPECT_EQ(files.files.size(), 45U);
}

TEST_F(WriteToLogTest, AFailureAfterTheCurrentFileWasPrunedDoesNotRecurse)
{
    // 42 names behind the new one's: it goes itself, and then another one cannot.
    for (int i = 0; i < 42; ++i)
        files.files[folder + "9" + std::to_string(100 + i)] = "";
    files.files[folder + "3"] = "";
    files.stuck[folder + "3"] = "stuck";
    log.writeEntry("lost");
    EXPECT_EQ(removed(), (std::vector<std::string>{folder + firstName, folder + "3"}));
    EXPECT_EQ(file.logFileName(), firstName);
    EXPECT_FALSE(files.files.contains(folder + firstName));
}

TEST_F(WriteToLogTest, NamesAreSortedByTheirBytes)
{
    fill(42);
    files.files[folder + "20240101_000000.LOG"] = "";
    files.files[folder + "\xC3\xA9"] = "";
    file.startNewLogFile();
    EXPECT_EQ(removed(),
        (std::vector<std::string>{folder + "20240101_000000.LOG", folder + "20240101_000000.log",
            folder + "20240101_000001.log"}));
}

// --- Edge cases

using LogEdgeCases = LogTest;

TEST_F(LogEdgeCases, AFirstMessageInAFreshFolderCreatesAStampedFile)
{
    log.writeEntry("[test] hello");
    ASSERT_EQ(files.files.size(), 1U);
    EXPECT_EQ(files.files.begin()->first, folder + firstName);
    EXPECT_EQ(files.files.begin()->second, "Sat Mar 01 10:15:00 [test] hello\n");
}

TEST_F(LogEdgeCases, DeletingTheCurrentFileMakesTheNextMessageStartOneWithASecondStamp)
{
    log.writeEntry("one");
    files.files.clear();
    clock.time.secondsSince1970 += 60;
    log.writeEntry("two");
    EXPECT_EQ(file.logFileName(), "20250301_101600_20250301_101500_zarn-shortcuts.log");
    EXPECT_EQ(files.files.at(folder + file.logFileName()), "Sat Mar 01 10:16:00 two\n");
}

TEST_F(LogEdgeCases, AMessageWithNewlinesIsWrittenUnchangedWithOneLineBreakAtItsEnd)
{
    log.writeEntry("a\n\nb\n");
    EXPECT_EQ(files.files.at(folder + firstName), "Sat Mar 01 10:15:00 a\n\nb\n\n");
}

TEST_F(LogEdgeCases, WithFortyTwoEntriesNothingIsDeleted)
{
    fill(41);
    file.startNewLogFile();
    EXPECT_EQ(files.files.size(), 42U);
    EXPECT_TRUE(removed().empty());
}

TEST_F(LogEdgeCases, WithFortyThreeEntriesExactlyTheFirstInSortedOrderIsDeleted)
{
    fill(42);
    file.startNewLogFile();
    EXPECT_EQ(removed(), std::vector<std::string>{folder + "20240101_000000.log"});
    EXPECT_EQ(files.files.size(), 42U);
}

TEST_F(LogEdgeCases, WithFiftyEntriesTheFirstEightAreDeletedInOrder)
{
    fill(49);
    file.startNewLogFile();
    const auto paths = removed();
    ASSERT_EQ(paths.size(), 8U);
    for (std::size_t i = 0; i < paths.size(); ++i)
        EXPECT_EQ(paths[i], folder + "20240101_00000" + std::to_string(i) + ".log");
    EXPECT_EQ(files.files.size(), 42U);
}

} // namespace
} // namespace zarn
