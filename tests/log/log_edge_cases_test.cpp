// SPDX-License-Identifier: MIT
#include "tests/log/log_fixture.h"

namespace zarn {
namespace {

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
