// SPDX-License-Identifier: MIT
// The log on folders and disks that do not play along: lines may be lost, silently; what was
// written stays, nothing is written where a link leads, and the program goes on.
#include "log/write_to_log.h"
#include "platform/linux/files/posix_services.h"
#include "platform/memory/memory_clock.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zarn::linux_backend {
namespace {

namespace fs = std::filesystem;

constexpr auto stamp = "Sat Mar 01 10:15:00 ";

std::string contentsOf(const std::string& path)
{
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

class LogFaults : public testing::Test {
protected:
    LogFaults()
    {
        fs::create_directories(folder);
        // Whoever the test becomes owns the home directory.
        for (const auto& path : {scratch.path(), home, home + "/Library", folder})
            giveToOrdinaryUser(path);
    }
    ~LogFaults() override { ::chmod(folder.c_str(), 0700); }

    /// What a run of the program writes.
    void write(const std::string& message) { log.writeEntry(message); }
    std::string current() const { return contentsOf(file.currentPath()); }
    static std::string line(const std::string& message) { return stamp + message + "\n"; }

    const ScratchFolder scratch;
    const std::string home = scratch.path() + "/home";
    const std::string folder = home + "/Library/Logs";
    memory::MemoryClock clock;
    memory::MemoryDateFormatter dates;
    PosixFileManager files{home};
    LogFile file{{files, clock, dates}};
    WriteToLog log{file};
};

TEST_F(LogFaults, AFullDiskLosesTheLineWholeAndKeepsWhatWasThere)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        write("first");
        for (rlim_t free = 0; free < line("lost").size(); ++free) {
            // So many bytes are free, then the disk is full.
            const rlimit full{line("first").size() + free, RLIM_INFINITY};
            if (::setrlimit(RLIMIT_FSIZE, &full) != 0)
                return false;
            write("lost");
            if (current() != line("first"))
                return false;
        }
        const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
        ::setrlimit(RLIMIT_FSIZE, &none);
        write("second");
        return current() == line("first") + line("second");
    }));
}

TEST_F(LogFaults, AFolderThatCannotBeWrittenLosesLinesUntilItCan)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        ::chmod(folder.c_str(), 0500);
        write("lost");
        if (!fs::is_empty(folder))
            return false;
        ::chmod(folder.c_str(), 0700);
        write("found");
        return current() == line("found");
    }));
}

TEST_F(LogFaults, AFolderThatCannotBeEnteredLosesLinesUntilItCan)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        ::chmod(folder.c_str(), 0);
        write("lost");
        ::chmod(folder.c_str(), 0700);
        if (!fs::is_empty(folder))
            return false;
        write("found");
        return current() == line("found");
    }));
}

TEST_F(LogFaults, AFileThatCannotBeWrittenKeepsItsContents)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        write("first");
        const auto path = file.currentPath();
        ::chmod(path.c_str(), 0400);
        write("lost");
        ::chmod(path.c_str(), 0600);
        write("second");
        return file.currentPath() == path && current() == line("first") + line("second");
    }));
}

TEST_F(LogFaults, AMissingFolderIsMadeAgainForTheUserAlone)
{
    fs::remove_all(home + "/Library");
    write("first");
    EXPECT_EQ(current(), line("first"));
    for (const auto& path : {home + "/Library", folder})
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all) << path;
}

TEST_F(LogFaults, AFileWhereTheFolderShouldBeStaysAndTheLinesAreLost)
{
    fs::remove(folder);
    std::ofstream(folder) << "in the way";
    write("lost");
    EXPECT_EQ(contentsOf(folder), "in the way");
}

TEST_F(LogFaults, AFolderWhereTheFileShouldBeStaysAndTheLinesAreLost)
{
    fs::create_directory(folder + "/zarn-shortcuts.log");
    write("lost");
    EXPECT_TRUE(fs::is_directory(folder + "/zarn-shortcuts.log"));
    EXPECT_TRUE(fs::is_empty(folder + "/zarn-shortcuts.log"));
}

TEST_F(LogFaults, ALinkInTheFilesPlaceIsNotWrittenThrough)
{
    const auto target = scratch.path() + "/victim";
    std::ofstream(target) << "kept";
    fs::create_symlink(target, folder + "/zarn-shortcuts.log");
    write("lost");
    EXPECT_EQ(contentsOf(target), "kept");
    // Neither when it takes the place of a file that was begun.
    fs::remove(folder + "/zarn-shortcuts.log");
    write("first");
    fs::remove(file.currentPath());
    fs::create_symlink(target, file.currentPath());
    write("lost");
    EXPECT_EQ(contentsOf(target), "kept");
}

TEST_F(LogFaults, ALinkThatLeadsNowhereCreatesNothingWhereItLeads)
{
    const auto target = scratch.path() + "/nothing";
    fs::create_symlink(target, folder + "/zarn-shortcuts.log");
    // Not even when somebody foresaw the name of the file that is begun instead.
    fs::create_symlink(target, folder + "/20250301_101500_zarn-shortcuts.log");
    write("lost");
    EXPECT_FALSE(fs::exists(target));
    clock.time.secondsSince1970 += 1;
    write("found");
    EXPECT_FALSE(fs::exists(target));
    EXPECT_EQ(current(), "Sat Mar 01 10:15:01 found\n");
}

TEST_F(LogFaults, AFolderThatIsALinkIsTheUsersChoice)
{
    fs::remove(folder);
    fs::create_directory(scratch.path() + "/elsewhere");
    fs::create_directory_symlink(scratch.path() + "/elsewhere", folder);
    write("first");
    EXPECT_EQ(contentsOf(scratch.path() + "/elsewhere/20250301_101500_zarn-shortcuts.log"),
        line("first"));
}

TEST_F(LogFaults, APipeInTheFilesPlaceStallsNobody)
{
    ASSERT_EQ(::mkfifo((folder + "/zarn-shortcuts.log").c_str(), 0600), 0);
    for (int i = 0; i < 5000; ++i)
        write("lost"); // More than a pipe holds.
    EXPECT_TRUE(fs::is_fifo(folder + "/zarn-shortcuts.log"));
}

TEST_F(LogFaults, OnlyWhatDidNotFitIsTakenBack)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        write("first");
        const auto handle = files.openForUpdating(file.currentPath());
        const rlimit full{line("first").size() + 5, RLIM_INFINITY};
        ::setrlimit(RLIMIT_FSIZE, &full);
        handle->seekToEndOfFile();
        handle->writeData("abc");
        handle->writeData("defg");
        return current() == line("first") + "abc";
    }));
}

} // namespace
} // namespace zarn::linux_backend
