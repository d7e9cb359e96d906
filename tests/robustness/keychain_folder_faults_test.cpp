// SPDX-License-Identifier: MIT
// The keychain file as an ordinary user has it, in folders and behind links that do not play along:
// what was stored stays, the status and one line say what is in the way, and nothing is written
// where a link leads.
#include "platform/linux/keychain/file_keychain.h"
#include "tests/support/begun_call.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <fstream>

#include <sys/stat.h>

namespace zarn::linux_backend {
namespace {

namespace fs = std::filesystem;

std::string contentsOf(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void put(const std::string& path, const std::string& contents)
{
    std::ofstream(path, std::ios::binary) << contents;
    ::chmod(path.c_str(), 0600);
}

class KeychainFolderFaults : public testing::Test {
protected:
    KeychainFolderFaults() { giveToOrdinaryUser(scratch.path()); }
    ~KeychainFolderFaults() override
    {
        for (const auto& folder : {data, state})
            ::chmod(folder.c_str(), 0700);
    }

    /// An add by a new run of the program.
    KeychainStatus add(const std::string& account)
    {
        BegunCall call([this](const std::string& line) { lines.push_back(line); });
        FileKeychain keychain(data, state, call);
        return keychain.add({"group", "ZPMA-host", account, {'p', 'w'}});
    }
    KeychainStatus copy(const std::string& account)
    {
        BegunCall call([this](const std::string& line) { lines.push_back(line); });
        FileKeychain keychain(data, state, call);
        return keychain.copyMatching({"group", "ZPMA-host", account, true}).status;
    }
    /// Each new run tells it in one line, and answers so.
    void expectUnreadable(const std::string& problem)
    {
        lines.clear();
        EXPECT_EQ(copy("first"), keychain_status::ioFailure);
        EXPECT_EQ(lines,
            std::vector<std::string>{
                "keychain: the keychain file cannot be read (" + problem + ")"});
    }
    void expectUnwritable(const std::string& problem)
    {
        lines.clear();
        EXPECT_EQ(add("second"), keychain_status::ioFailure);
        EXPECT_EQ(lines,
            std::vector<std::string>{
                "keychain: the keychain file cannot be written (" + problem + ")"});
    }
    void store()
    {
        EXPECT_EQ(add("first"), keychain_status::success);
        before = contentsOf(file) + contentsOf(key);
        EXPECT_FALSE(before.empty());
    }
    void expectKept()
    {
        lines.clear();
        EXPECT_EQ(contentsOf(file) + contentsOf(key), before);
        EXPECT_EQ(copy("first"), keychain_status::success);
        EXPECT_EQ(copy("second"), keychain_status::itemNotFound);
        EXPECT_EQ(lines, std::vector<std::string>{});
        for (const auto& path : {file, key})
            EXPECT_FALSE(fs::exists(fs::symlink_status(path + ".tmp")));
    }

    const ScratchFolder scratch;
    const std::string data = scratch.path() + "/data";
    const std::string state = scratch.path() + "/state";
    const std::string file = data + "/keychain";
    const std::string key = state + "/keychain.key";
    std::string before;
    std::vector<std::string> lines;
};

TEST_F(KeychainFolderFaults, AFolderThatCannotBeWrittenKeepsItsFile)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        store();
        ::chmod(data.c_str(), 0500);
        expectUnwritable("cannot create " + file + ".tmp: Permission denied");
        expectKept();
        ::chmod(data.c_str(), 0700);
        fs::remove(file + ".lock");
        ::chmod(data.c_str(), 0500);
        expectUnwritable("cannot open " + file + ".lock: Permission denied");
        expectKept();
        ::chmod(data.c_str(), 0700);
        EXPECT_EQ(add("second"), keychain_status::success);
        return true;
    }));
}

TEST_F(KeychainFolderFaults, AFolderThatCannotBeEnteredKeepsItsFile)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        store();
        ::chmod(data.c_str(), 0);
        expectUnreadable("cannot read " + file + ": Permission denied");
        expectUnwritable("cannot open " + file + ".lock: Permission denied");
        ::chmod(data.c_str(), 0700);
        expectKept();
        return true;
    }));
}

TEST_F(KeychainFolderFaults, AFileThatCannotBeReadIsNotReplaced)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        store();
        for (const auto& closed : {file, key}) {
            ::chmod(closed.c_str(), 0);
            const auto problem = "cannot read " + closed + ": Permission denied";
            expectUnreadable(problem);
            lines.clear();
            EXPECT_EQ(add("second"), keychain_status::ioFailure);
            EXPECT_EQ(lines,
                std::vector<std::string>{
                    "keychain: the keychain file cannot be read (" + problem + ")"});
            ::chmod(closed.c_str(), 0600);
            expectKept();
        }
        return true;
    }));
}

TEST_F(KeychainFolderFaults, AFileWhereTheFolderShouldBeStays)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        put(data, "in the way");
        expectUnreadable("cannot read " + file + ": Not a directory");
        expectUnwritable("cannot make the folder " + data + ": Not a directory");
        EXPECT_EQ(contentsOf(data), "in the way");
        fs::remove(data);
        put(state, "in the way");
        expectUnwritable("cannot make the folder " + state + ": Not a directory");
        EXPECT_EQ(contentsOf(state), "in the way");
        EXPECT_FALSE(fs::exists(file));
        return true;
    }));
}

TEST_F(KeychainFolderFaults, WithoutAPlaceForItsKeyNothingIsStored)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        fs::create_directory(state);
        ::chmod(state.c_str(), 0500);
        expectUnwritable("cannot create " + key + ".tmp: Permission denied");
        ::chmod(state.c_str(), 0);
        lines.clear();
        EXPECT_EQ(add("second"), keychain_status::ioFailure);
        EXPECT_EQ(lines,
            std::vector<std::string>{"keychain: the keychain file cannot be read (cannot read "
                + key + ": Permission denied)"});
        ::chmod(state.c_str(), 0700);
        EXPECT_FALSE(fs::exists(file));
        EXPECT_TRUE(fs::is_empty(state));
        return true;
    }));
}

TEST_F(KeychainFolderFaults, FoldersThatAreLinksAreTheUsersChoice)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        store();
        for (const auto& folder : {data, state}) {
            fs::rename(folder, folder + "-elsewhere");
            fs::create_directory_symlink(folder + "-elsewhere", folder);
        }
        expectKept();
        EXPECT_EQ(add("second"), keychain_status::success);
        EXPECT_EQ(copy("second"), keychain_status::success);
        EXPECT_TRUE(fs::is_symlink(data) && fs::is_symlink(state));
        return true;
    }));
}

TEST_F(KeychainFolderFaults, ALinkInTheLocksPlaceIsNotFollowed)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        store();
        const auto victim = scratch.path() + "/victim";
        const auto nowhere = scratch.path() + "/nowhere";
        put(victim, "victim");
        for (const auto& target : {victim, nowhere}) {
            fs::remove(file + ".lock");
            fs::create_symlink(target, file + ".lock");
            expectUnwritable("cannot open " + file + ".lock: it is a symbolic link");
        }
        EXPECT_EQ(contentsOf(victim), "victim");
        EXPECT_FALSE(fs::exists(nowhere));
        expectKept();
        return true;
    }));
}

TEST_F(KeychainFolderFaults, ALinkInTheKeysTemporaryPlaceIsNotWrittenThrough)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        const auto victim = scratch.path() + "/victim";
        put(victim, "victim");
        fs::create_directory(state);
        ::chmod(state.c_str(), 0700);
        fs::create_symlink(victim, key + ".tmp");
        EXPECT_EQ(add("first"), keychain_status::success);
        EXPECT_EQ(copy("first"), keychain_status::success);
        EXPECT_EQ(contentsOf(victim), "victim");
        EXPECT_FALSE(fs::is_symlink(key));
        return true;
    }));
}

TEST_F(KeychainFolderFaults, AMissingHomeIsMadeWhereThatIsAllowed)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        ::chmod(scratch.path().c_str(), 0500);
        lines.clear();
        EXPECT_EQ(copy("first"), keychain_status::itemNotFound);
        EXPECT_EQ(lines, std::vector<std::string>{});
        expectUnwritable("cannot make the folder " + data + ": Permission denied");
        ::chmod(scratch.path().c_str(), 0700);
        store();
        expectKept();
        return true;
    }));
}

TEST_F(KeychainFolderFaults, ADamagedFileThatCannotBeRenamedIsNotReplaced)
{
    EXPECT_TRUE(asOrdinaryUser([&] {
        store();
        put(file, "no keychain");
        ::chmod(data.c_str(), 0500);
        lines.clear();
        EXPECT_EQ(copy("first"), keychain_status::ioFailure);
        const std::vector<std::string> reported{
            "keychain: the keychain file is damaged and reads as "
            "empty (cannot rename the damaged "
            + file + ": Permission denied)"};
        EXPECT_EQ(lines, reported);
        lines.clear();
        EXPECT_EQ(add("second"), keychain_status::ioFailure);
        EXPECT_EQ(lines, reported);
        EXPECT_EQ(contentsOf(file), "no keychain");
        return true;
    }));
}

} // namespace
} // namespace zarn::linux_backend
