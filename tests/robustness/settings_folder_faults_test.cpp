// SPDX-License-Identifier: MIT
// Settings as an ordinary user has them, in folders and behind links that do not play along: what
// was stored stays, a write says what is in its way, and nothing is written where a link leads.
#include "platform/linux/files/durable_file.h"
#include "platform/linux/settings/plist_settings.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include <sys/stat.h>

namespace zarn::linux_backend {
namespace {

namespace fs = std::filesystem;

constexpr auto good = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>username</key><string>kept</string></dict></plist>
)";

std::string contentsOf(const std::string& path)
{
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

void put(const std::string& path, const std::string& contents)
{
    std::ofstream(path) << contents;
    ::chmod(path.c_str(), 0600);
}

unsigned modeOf(const std::string& path)
{
    struct stat status { };
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
}

class SettingsFolderFaults : public testing::Test {
protected:
    SettingsFolderFaults()
    {
        fs::create_directory(folder);
        ::chmod(folder.c_str(), 0700);
        put(path, good);
        for (const auto& mine : {scratch.path(), folder, path})
            giveToOrdinaryUser(mine);
    }
    ~SettingsFolderFaults() override { ::chmod(folder.c_str(), 0700); }

    /// What a new run of the program reads, and what it says.
    void expectRead(const std::string& value, const std::string& said) const
    {
        testing::internal::CaptureStderr();
        PlistSettings settings(folder, {}, nullptr);
        EXPECT_EQ(settings.domain(name)->string("username").value_or(""), value);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), said);
    }
    /// A write by a run that has not read before answers and says so; "" for one that succeeds.
    void expectWrite(const std::string& problem) const
    {
        PlistSettings settings(folder, {}, nullptr);
        auto& domain = *settings.domain(name);
        const auto status = domain.trySet("username", "new");
        EXPECT_EQ(status ? "" : status.error().message, problem);
        testing::internal::CaptureStderr();
        domain.set("username", "new");
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
            problem.empty() ? ""
                            : "zarn-actions: setting username was not saved: " + problem + "\n");
    }
    void expectKept() const
    {
        EXPECT_EQ(contentsOf(path), good);
        EXPECT_FALSE(fs::exists(path + ".tmp"));
        expectRead("kept", "");
    }
    std::string notRead(const std::string& reason) const
    {
        return "zarn-actions: settings read as empty: cannot read " + path + ": " + reason + "\n";
    }

    const ScratchFolder scratch;
    const std::string folder = scratch.path() + "/zarn-actions";
    const std::string name = "group.Q7X2M9K4TA.zarnactions";
    const std::string path = folder + "/" + name + ".plist";
};

TEST_F(SettingsFolderFaults, AFolderThatCannotBeWrittenKeepsItsFile)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        ::chmod(folder.c_str(), 0500);
        expectRead("kept", "");
        expectWrite("cannot open " + path + ".lock: Permission denied");
        // The lock of an earlier run is there in most cases.
        ::chmod(folder.c_str(), 0700);
        put(path + ".lock", "");
        ::chmod(folder.c_str(), 0500);
        expectWrite("cannot create " + path + ".tmp: Permission denied");
        expectKept();
        ::chmod(folder.c_str(), 0700);
        expectWrite("");
        return true;
    }));
}

TEST_F(SettingsFolderFaults, AFolderThatCannotBeEnteredKeepsItsFile)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        ::chmod(folder.c_str(), 0);
        expectRead("", notRead("Permission denied"));
        expectWrite("cannot open " + path + ".lock: Permission denied");
        ::chmod(folder.c_str(), 0700);
        expectKept();
        expectWrite("");
        return true;
    }));
}

TEST_F(SettingsFolderFaults, AFileThatCannotBeReadIsNotReplaced)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        ::chmod(path.c_str(), 0);
        expectRead("", notRead("Permission denied"));
        expectWrite("cannot read " + path + ": Permission denied");
        ::chmod(path.c_str(), 0600);
        expectKept();
        return true;
    }));
}

TEST_F(SettingsFolderFaults, AFileWhereTheFolderShouldBeStays)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        fs::remove_all(folder);
        put(folder, "in the way");
        const auto problem = "cannot make the folder " + folder + ": Not a directory";
        expectRead("", notRead("Not a directory"));
        expectWrite(problem);
        testing::internal::CaptureStderr();
        PlistSettings settings(folder, {}, nullptr);
        EXPECT_EQ(settings.suite(name), nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "zarn-actions: " + problem + "\n");
        EXPECT_EQ(contentsOf(folder), "in the way");
        return true;
    }));
}

TEST_F(SettingsFolderFaults, AFolderThatIsALinkIsTheUsersChoice)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        const auto elsewhere = scratch.path() + "/elsewhere";
        fs::rename(folder, elsewhere);
        fs::create_directory_symlink(elsewhere, folder);
        expectKept();
        expectWrite("");
        expectRead("new", "");
        EXPECT_TRUE(fs::is_symlink(folder));
        EXPECT_TRUE(fs::exists(elsewhere + "/" + name + ".plist"));
        // It is as private as any.
        ::chmod(elsewhere.c_str(), 0755);
        testing::internal::CaptureStderr();
        PlistSettings settings(folder, {}, nullptr);
        settings.domain(name)->set("username", "newer");
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "zarn-actions: others could look into " + folder + "; made it private\n");
        EXPECT_EQ(modeOf(elsewhere), 0700U);
        return true;
    }));
}

TEST_F(SettingsFolderFaults, AFolderThatIsALinkToNowhereIsNotMade)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        const auto nowhere = scratch.path() + "/nowhere";
        fs::remove_all(folder);
        fs::create_directory_symlink(nowhere, folder);
        expectRead("", "");
        expectWrite("cannot make the folder " + folder + ": Not a directory");
        EXPECT_TRUE(fs::is_symlink(folder));
        EXPECT_FALSE(fs::exists(nowhere));
        return true;
    }));
}

TEST_F(SettingsFolderFaults, ALinkInTheLocksPlaceIsNotFollowed)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        const auto victim = scratch.path() + "/victim";
        const auto nowhere = scratch.path() + "/nowhere";
        put(victim, "victim");
        ::chmod(victim.c_str(), 0644);
        for (const auto& target : {victim, nowhere}) {
            fs::create_symlink(target, path + ".lock");
            expectWrite("cannot open " + path + ".lock: it is a symbolic link");
            EXPECT_TRUE(fs::is_symlink(path + ".lock"));
            fs::remove(path + ".lock");
        }
        EXPECT_EQ(contentsOf(victim), "victim");
        EXPECT_EQ(modeOf(victim), 0644U);
        EXPECT_FALSE(fs::exists(nowhere));
        expectKept();
        return true;
    }));
}

TEST_F(SettingsFolderFaults, ALinkInTheTemporaryFilesPlaceIsNotWrittenThrough)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        const auto victim = scratch.path() + "/victim";
        put(victim, "victim");
        fs::create_symlink(victim, path + ".tmp");
        expectWrite("");
        expectRead("new", "");
        EXPECT_EQ(contentsOf(victim), "victim");
        EXPECT_FALSE(fs::is_symlink(path));
        EXPECT_FALSE(fs::exists(fs::symlink_status(path + ".tmp")));
        return true;
    }));
}

TEST_F(SettingsFolderFaults, AFolderInTheTemporaryFilesPlaceEndsTheWrite)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        fs::create_directory(path + ".tmp");
        expectWrite("cannot remove " + path + ".tmp: Is a directory");
        fs::remove(path + ".tmp");
        expectKept();
        return true;
    }));
}

TEST_F(SettingsFolderFaults, AMissingHomeIsMadeWhereThatIsAllowed)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        fs::remove_all(folder);
        expectRead("", "");
        ::chmod(scratch.path().c_str(), 0500);
        expectWrite("cannot make the folder " + folder + ": Permission denied");
        ::chmod(scratch.path().c_str(), 0700);
        expectWrite("");
        expectRead("new", "");
        EXPECT_EQ(modeOf(folder), 0700U);
        return true;
    }));
}

TEST_F(SettingsFolderFaults, ADamagedFileThatCannotBeRenamedIsNotReplaced)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        put(path, "damaged");
        put(path + ".lock", "");
        ::chmod(folder.c_str(), 0500);
        const auto problem = "cannot rename the damaged " + path + ": Permission denied";
        testing::internal::CaptureStderr();
        PlistSettings settings(folder, {}, nullptr);
        auto& domain = *settings.domain(name);
        EXPECT_EQ(domain.string("username").value_or(""), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "zarn-actions: settings read as empty: " + problem + "\n");
        const auto status = domain.trySet("username", "new");
        EXPECT_EQ(status ? "" : status.error().message, problem);
        EXPECT_EQ(contentsOf(path), "damaged");
        return true;
    }));
}

} // namespace
} // namespace zarn::linux_backend
