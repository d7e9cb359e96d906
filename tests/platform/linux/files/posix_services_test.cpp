// SPDX-License-Identifier: MIT
#include "platform/linux/files/posix_services.h"

#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <ctime>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

namespace zarn::linux_backend {
namespace {

TEST(SystemClock, IsTheSystemsClock)
{
    const auto before = std::time(nullptr);
    const auto now = SystemClock().now().secondsSince1970;
    EXPECT_GE(now, static_cast<double>(before) - 1);
    EXPECT_LE(now, static_cast<double>(std::time(nullptr)) + 1);
}

class PosixFiles : public testing::Test {
protected:
    unsigned modeOf(const std::string& name) const
    {
        struct stat status { };
        EXPECT_EQ(::lstat((home + name).c_str(), &status), 0) << name;
        return status.st_mode & 0777U;
    }
    const ScratchFolder scratch;
    const std::string home = scratch.path();
    PosixFileManager files{home};
};

TEST_F(PosixFiles, NewFilesAndFoldersAreTheUsersAloneWhateverTheUmask)
{
    for (const mode_t mask : {0U, 0022U, 0077U, 0777U}) {
        const auto folder = "/" + std::to_string(mask);
        const auto before = ::umask(mask);
        EXPECT_TRUE(files.createFile(home + folder + "/sub/file"));
        ::umask(before);
        EXPECT_EQ(modeOf(folder), 0700U);
        EXPECT_EQ(modeOf(folder + "/sub"), 0700U);
        EXPECT_EQ(modeOf(folder + "/sub/file"), 0600U);
    }
}

TEST_F(PosixFiles, AFileThatOthersCouldReadIsMadePrivateWhenItIsCreatedAnew)
{
    std::ofstream(home + "/file") << "old";
    ::chmod((home + "/file").c_str(), 0644);
    EXPECT_TRUE(files.createFile(home + "/file"));
    EXPECT_EQ(modeOf("/file"), 0600U);
}

TEST_F(PosixFiles, AFileThatOthersCouldReadIsMadePrivateWhenItIsOpenedAndThatIsTold)
{
    std::ofstream(home + "/file") << "old";
    ::chmod((home + "/file").c_str(), 0644);
    for (const bool isFirst : {true, false}) {
        testing::internal::CaptureStderr();
        EXPECT_NE(files.openForUpdating(home + "/file"), nullptr);
        const auto text = testing::internal::GetCapturedStderr();
        EXPECT_EQ(text,
            isFirst ? "zarn-actions: others could read " + home + "/file; made it private\n" : "");
        EXPECT_EQ(modeOf("/file"), 0600U);
    }
}

TEST_F(PosixFiles, LinksAreNotFollowed)
{
    std::ofstream(home + "/target") << "kept";
    ASSERT_EQ(::symlink((home + "/target").c_str(), (home + "/link").c_str()), 0);
    EXPECT_FALSE(files.createFile(home + "/link"));
    EXPECT_EQ(files.openForUpdating(home + "/link"), nullptr);
    EXPECT_TRUE(files.removeItem(home + "/link").ok());
    EXPECT_TRUE(files.fileExists(home + "/target"));
}

TEST_F(PosixFiles, AFolderCannotBeOpenedAndAFileIsNoFolder)
{
    files.createFile(home + "/folder/file");
    EXPECT_EQ(files.openForUpdating(home + "/folder"), nullptr);
    EXPECT_FALSE(files.createFile(home + "/folder"));
    EXPECT_FALSE(files.createFile(home + "/folder/file/below"));
    EXPECT_FALSE(files.contentsOfDirectory(home + "/folder/file").ok());
}

TEST_F(PosixFiles, AnErrorReadsLikeTheSystemsOwn)
{
    EXPECT_EQ(files.removeItem(home + "/missing").error().message, "No such file or directory");
}

} // namespace
} // namespace zarn::linux_backend
