// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/file_keychain.h"

#include "tests/support/begun_call.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zarn::linux_backend {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class FileKeychainTest : public testing::Test {
protected:
    FileKeychain open()
    {
        call = std::make_unique<BegunCall>(
            [this](const std::string& line) { lines.push_back(line); });
        return {data(), state(), *call};
    }
    KeychainStatus add(FileKeychain& keychain, const std::string& account = "admin")
    {
        return keychain.add({"group", "ZPMA-host", account, {'p', 'w'}});
    }
    static KeychainStatus copy(FileKeychain& keychain, const std::string& account = "admin")
    {
        return keychain.copyMatching({"group", "ZPMA-host", account, true}).status;
    }
    /// A keychain with one item, written by an earlier run.
    void makeKeychain()
    {
        auto keychain = open();
        ASSERT_EQ(add(keychain), keychain_status::success);
    }

    std::string data() const { return scratch.path() + "/data"; }
    std::string state() const { return scratch.path() + "/state"; }
    std::string file() const { return data() + "/keychain"; }
    std::string keyFile() const { return state() + "/keychain.key"; }

    static std::string contents(const std::string& path)
    {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static void write(const std::string& path, const std::string& bytes)
    {
        std::ofstream(path, std::ios::binary) << bytes;
        ::chmod(path.c_str(), 0600);
    }
    static std::string mode(const std::string& path)
    {
        struct stat status { };
        if (::lstat(path.c_str(), &status) != 0)
            return "missing";
        char text[8];
        std::snprintf(text, sizeof text, "%04o", status.st_mode & 07777U);
        return text;
    }
    std::vector<std::string> damagedCopies(const std::string& folder) const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            if (entry.path().string().find(".damaged-") != std::string::npos)
                names.push_back(entry.path());
        return names;
    }
    bool reported(const std::string& text) const
    {
        return lines.size() == 1 && lines[0].find(text) != std::string::npos;
    }

    const ScratchFolder scratch;
    std::vector<std::string> lines;
    std::unique_ptr<BegunCall> call;
};

TEST_F(FileKeychainTest, FilesAreForTheUserAloneWhateverTheUmask)
{
    for (const mode_t umask : {0000U, 0022U, 0777U}) {
        const ScratchFolder folder;
        const auto before = ::umask(umask);
        BegunCall quiet([](const std::string&) {});
        FileKeychain keychain(folder.path() + "/d", folder.path() + "/s", quiet);
        const auto status = add(keychain);
        ::umask(before);
        EXPECT_EQ(status, keychain_status::success);
        EXPECT_EQ(mode(folder.path() + "/d"), "0700");
        EXPECT_EQ(mode(folder.path() + "/s"), "0700");
        EXPECT_EQ(mode(folder.path() + "/d/keychain"), "0600");
        EXPECT_EQ(mode(folder.path() + "/s/keychain.key"), "0600");
    }
}

TEST_F(FileKeychainTest, LooserModesAreTightenedAndThatIsTold)
{
    makeKeychain();
    ::chmod(file().c_str(), 0644);
    ::chmod(keyFile().c_str(), 0640);
    auto keychain = open();
    testing::internal::CaptureStderr();
    EXPECT_EQ(copy(keychain), keychain_status::success);
    const auto text = testing::internal::GetCapturedStderr();
    EXPECT_EQ(mode(file()), "0600");
    EXPECT_EQ(mode(keyFile()), "0600");
    EXPECT_NE(text.find(file()), std::string::npos) << text;
    EXPECT_NE(text.find(keyFile()), std::string::npos) << text;
}

TEST_F(FileKeychainTest, LooserFoldersAreTightenedAndThatIsTold)
{
    // Once with the key that is there, once with a new one.
    for (const bool hasKey : {true, false}) {
        hasKey ? makeKeychain() : void(fs::create_directory(state()));
        fs::create_directories(data());
        ::chmod(data().c_str(), 0755);
        ::chmod(state().c_str(), 0750);
        auto keychain = open();
        testing::internal::CaptureStderr();
        EXPECT_EQ(add(keychain, "other"), keychain_status::success);
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "zarn-actions: others could look into " + data()
                + "; made it private\nzarn-actions: others could look into " + state()
                + "; made it private\n");
        EXPECT_EQ(mode(data()), "0700");
        EXPECT_EQ(mode(state()), "0700");
        fs::remove_all(data());
        fs::remove_all(state());
    }
}

TEST_F(FileKeychainTest, EachWriteRaisesTheGeneration)
{
    auto keychain = open();
    ASSERT_EQ(add(keychain, "1"), keychain_status::success);
    ASSERT_EQ(add(keychain, "2"), keychain_status::success);
    ASSERT_EQ(add(keychain, "2"), keychain_status::duplicateItem);
    KeychainContents stored;
    ASSERT_EQ(keychain.read(stored), keychain_status::success);
    EXPECT_EQ(stored.generation, 2U);
}

TEST_F(FileKeychainTest, LookingUpWritesNothing)
{
    auto keychain = open();
    EXPECT_EQ(copy(keychain), keychain_status::itemNotFound);
    EXPECT_FALSE(fs::exists(data()));
    EXPECT_FALSE(fs::exists(state()));
    EXPECT_TRUE(lines.empty());
}

TEST_F(FileKeychainTest, WrongKeyIsReportedAndNothingIsOverwritten)
{
    makeKeychain();
    const auto before = contents(file());
    write(keyFile(), std::string(keychainKeySize, 'x'));
    auto keychain = open();
    EXPECT_EQ(copy(keychain), keychain_status::invalidKeychain);
    EXPECT_EQ(add(keychain, "other"), keychain_status::invalidKeychain);
    EXPECT_TRUE(reported("left untouched (" + file() + ")")) << lines.size();
    EXPECT_EQ(contents(file()), before);
    EXPECT_EQ(contents(keyFile()), std::string(keychainKeySize, 'x'));
    EXPECT_TRUE(damagedCopies(data()).empty());
}

TEST_F(FileKeychainTest, LostKeyIsReportedAndNothingIsOverwritten)
{
    makeKeychain();
    const auto before = contents(file());
    fs::remove(keyFile());
    auto keychain = open();
    EXPECT_EQ(copy(keychain), keychain_status::invalidKeychain);
    EXPECT_EQ(add(keychain, "other"), keychain_status::invalidKeychain);
    EXPECT_TRUE(reported("key of the keychain file is missing"));
    EXPECT_EQ(contents(file()), before);
    EXPECT_FALSE(fs::exists(keyFile()));
}

TEST_F(FileKeychainTest, KeyOfAnotherLengthIsReportedAndNothingIsOverwritten)
{
    for (const std::size_t size :
        {std::size_t{0}, std::size_t{31}, std::size_t{33}, std::size_t{5000}}) {
        makeKeychain();
        const auto before = contents(file());
        write(keyFile(), std::string(size, 'x'));
        auto keychain = open();
        lines.clear();
        EXPECT_EQ(add(keychain, "other"), keychain_status::invalidKeychain) << size;
        EXPECT_EQ(lines.size(), 1U) << size;
        EXPECT_EQ(contents(file()), before) << size;
        fs::remove_all(data());
        fs::remove_all(state());
    }
}

TEST_F(FileKeychainTest, UnusableKeyWithoutAKeychainIsKeptBesideTheNewOne)
{
    fs::create_directory(state());
    write(keyFile(), "short");
    auto keychain = open();
    EXPECT_EQ(add(keychain), keychain_status::success);
    EXPECT_EQ(copy(keychain), keychain_status::success);
    const auto kept = damagedCopies(state());
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_EQ(contents(kept[0]), "short");
}

TEST_F(FileKeychainTest, NewerVersionIsReportedAndNothingIsOverwritten)
{
    makeKeychain();
    auto bytes = contents(file());
    bytes[8] = 2;
    write(file(), bytes);
    auto keychain = open();
    EXPECT_EQ(copy(keychain), keychain_status::invalidKeychain);
    EXPECT_EQ(add(keychain, "other"), keychain_status::invalidKeychain);
    EXPECT_TRUE(reported("newer program"));
    EXPECT_EQ(contents(file()), bytes);
}

TEST_F(FileKeychainTest, FileThatIsNoKeychainIsKeptBesideTheNewOne)
{
    fs::create_directory(data());
    for (const std::string bytes :
        {"", "Z", "not a keychain at all, but long enough for a header"}) {
        fs::remove(file());
        write(file(), bytes);
        auto keychain = open();
        lines.clear();
        EXPECT_EQ(copy(keychain), keychain_status::itemNotFound);
        EXPECT_FALSE(fs::exists(file()));
        EXPECT_EQ(add(keychain), keychain_status::success);
        EXPECT_EQ(copy(keychain), keychain_status::success);
        const auto kept = damagedCopies(data());
        ASSERT_EQ(kept.size(), 1U);
        EXPECT_EQ(lines,
            std::vector<std::string>{"keychain: the keychain file is damaged and reads as empty ("
                + file() + " is kept as " + kept[0] + ")"});
        EXPECT_EQ(contents(kept[0]), bytes);
        EXPECT_EQ(mode(kept[0]), "0600");
        fs::remove(kept[0]);
    }
}

TEST_F(FileKeychainTest, EveryTruncationPointIsToldAndTheProgramGoesOn)
{
    makeKeychain();
    const auto whole = contents(file());
    std::size_t reported = 0;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        write(file(), whole.substr(0, size));
        auto keychain = open();
        lines.clear();
        const auto status = copy(keychain);
        EXPECT_EQ(status,
            size < keychainHeaderSize ? keychain_status::itemNotFound
                                      : keychain_status::invalidKeychain)
            << size;
        EXPECT_EQ(lines.size(), 1U) << size;
        reported += lines.size();
    }
    std::printf("Keychain file: %zu lengths, %zu lines reported\n", whole.size(), reported);
}

TEST_F(FileKeychainTest, LinksAreNotFollowed)
{
    makeKeychain();
    fs::rename(file(), scratch.path() + "/elsewhere");
    fs::create_symlink(scratch.path() + "/elsewhere", file());
    const auto before = contents(scratch.path() + "/elsewhere");
    auto keychain = open();
    EXPECT_EQ(copy(keychain), keychain_status::ioFailure);
    EXPECT_EQ(add(keychain, "other"), keychain_status::ioFailure);
    EXPECT_TRUE(fs::is_symlink(file()));
    EXPECT_EQ(contents(scratch.path() + "/elsewhere"), before);
    fs::remove(file());
    fs::rename(scratch.path() + "/elsewhere", file());
    fs::rename(keyFile(), scratch.path() + "/key");
    fs::create_symlink(scratch.path() + "/key", keyFile());
    auto again = open();
    EXPECT_EQ(copy(again), keychain_status::ioFailure);
    EXPECT_EQ(add(again, "other"), keychain_status::ioFailure);
    EXPECT_EQ(contents(file()), before);
}

TEST_F(FileKeychainTest, PlantedTemporaryLinkIsNotWrittenThrough)
{
    makeKeychain();
    write(scratch.path() + "/victim", "victim");
    fs::create_symlink(scratch.path() + "/victim", file() + ".tmp");
    auto keychain = open();
    EXPECT_EQ(add(keychain, "other"), keychain_status::success);
    EXPECT_EQ(contents(scratch.path() + "/victim"), "victim");
    EXPECT_FALSE(fs::exists(file() + ".tmp"));
}

TEST_F(FileKeychainTest, FolderWhereTheFileShouldBeIsAFailureNotAnEmptyKeychain)
{
    fs::create_directories(file());
    auto keychain = open();
    EXPECT_EQ(copy(keychain), keychain_status::ioFailure);
    EXPECT_EQ(add(keychain), keychain_status::ioFailure);
    EXPECT_TRUE(fs::is_directory(file()));
}

TEST_F(FileKeychainTest, FileWhereAFolderShouldBeIsAFailure)
{
    write(data(), "in the way");
    auto keychain = open();
    EXPECT_EQ(add(keychain), keychain_status::ioFailure);
    EXPECT_EQ(contents(data()), "in the way");
    EXPECT_TRUE(reported("cannot be written"));
}

TEST_F(FileKeychainTest, WithoutAHomeThereIsNoKeychain)
{
    BegunCall quiet([](const std::string&) {});
    FileKeychain keychain("", "", quiet);
    EXPECT_EQ(copy(keychain), keychain_status::notAvailable);
    EXPECT_EQ(add(keychain), keychain_status::notAvailable);
    EXPECT_FALSE(keychain.exists());
}

TEST_F(FileKeychainTest, ForeignLockIsWaitedForWithinTheLimitOnly)
{
    makeKeychain();
    const int lock = ::open((file() + ".lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(lock, 0);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    auto keychain = open();
    const auto begin = std::chrono::steady_clock::now();
    call->begin({100ms});
    EXPECT_EQ(keychain.add({"group", "s", "a", {}}), keychain_status::interactionNotAllowed);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 3s);
    call->begin({20s});
    EXPECT_EQ(copy(keychain), keychain_status::success) << "readers need no lock";
    ::close(lock);
    EXPECT_EQ(add(keychain, "other"), keychain_status::success);
}

TEST_F(FileKeychainTest, StrayTemporaryFileIsGoneAfterTheNextWrite)
{
    makeKeychain();
    write(file() + ".tmp", "half a file");
    auto keychain = open();
    EXPECT_EQ(add(keychain, "other"), keychain_status::success);
    EXPECT_FALSE(fs::exists(file() + ".tmp"));
}

TEST_F(FileKeychainTest, RemovingTheLastItemRemovesKeychainAndKey)
{
    auto keychain = open();
    ASSERT_EQ(add(keychain, "1"), keychain_status::success);
    ASSERT_EQ(add(keychain, "2"), keychain_status::success);
    KeychainContents stored;
    ASSERT_EQ(keychain.read(stored), keychain_status::success);
    EXPECT_EQ(keychain.remove({stored.items[0]}), keychain_status::success);
    EXPECT_EQ(copy(keychain, "1"), keychain_status::itemNotFound);
    EXPECT_EQ(copy(keychain, "2"), keychain_status::success);
    EXPECT_EQ(keychain.remove({stored.items[1]}), keychain_status::success);
    EXPECT_FALSE(fs::exists(file()));
    EXPECT_FALSE(fs::exists(keyFile()));
}

TEST_F(FileKeychainTest, ItemThatWasWrittenMeanwhileIsNotRemoved)
{
    auto keychain = open();
    ASSERT_EQ(add(keychain), keychain_status::success);
    KeychainContents stored;
    ASSERT_EQ(keychain.read(stored), keychain_status::success);
    ASSERT_EQ(
        keychain.update({"group", "ZPMA-host", "admin", true}, {'n'}), keychain_status::success);
    EXPECT_EQ(keychain.remove(stored.items), keychain_status::success);
    EXPECT_EQ(copy(keychain), keychain_status::success);
}

} // namespace
} // namespace zarn::linux_backend
