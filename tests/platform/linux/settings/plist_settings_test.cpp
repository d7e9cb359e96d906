// SPDX-License-Identifier: MIT
#include "platform/linux/settings/plist_settings.h"

#include "platform/linux/files/durable_file.h"
#include "platform/linux/files/file_lock.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zarn::linux_backend {
namespace {

namespace fs = std::filesystem;

class PlistSettingsTest : public testing::Test {
protected:
    PlistSettingsTest() { EXPECT_TRUE(makePrivateFolder(folder).ok()); }

    static std::string contentsOf(const std::string& path)
    {
        std::stringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }
    void put(const std::string& contents, mode_t mode = 0600) const
    {
        std::ofstream(path) << contents;
        ::chmod(path.c_str(), mode);
    }
    static unsigned modeOf(const std::string& path)
    {
        struct stat status { };
        return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0U;
    }
    std::vector<std::string> names() const
    {
        std::vector<std::string> result;
        for (const auto& entry : fs::directory_iterator(folder))
            result.push_back(entry.path().filename().string());
        std::sort(result.begin(), result.end());
        return result;
    }
    /// What was said on standard error meanwhile.
    template <typename Action> static std::string said(Action action)
    {
        testing::internal::CaptureStderr();
        action();
        return testing::internal::GetCapturedStderr();
    }
    static std::ptrdiff_t linesOf(const std::string& text)
    {
        return std::count(text.begin(), text.end(), '\n');
    }

    const ScratchFolder scratch;
    const std::string folder = scratch.path() + "/zarn-actions";
    const std::string name = "group.Q7X2M9K4TA.zarnactions";
    const std::string path = folder + "/" + name + ".plist";
    PlistSettings settings{folder, {}, nullptr};
    PlistDomain& domain = *settings.domain(name);
    const std::string good = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>username</key><string>kept</string></dict></plist>
)";
};

TEST_F(PlistSettingsTest, FilesAndFoldersAreTheUsersAloneWhateverTheUmask)
{
    for (const mode_t mask : {0U, 0022U, 0777U}) {
        fs::remove_all(folder);
        const auto before = ::umask(mask);
        domain.set("key", 1);
        ::umask(before);
        EXPECT_EQ(modeOf(folder), 0700U);
        EXPECT_EQ(modeOf(path), 0600U);
        EXPECT_EQ(modeOf(path + ".lock"), 0600U);
    }
}

TEST_F(PlistSettingsTest, LooserModesAreTightenedAndTold)
{
    put(good, 0644);
    ::chmod(folder.c_str(), 0755);
    const auto text = said([&] { EXPECT_EQ(domain.string("username"), "kept"); });
    EXPECT_EQ(text, "zarn-actions: others could read " + path + "; made it private\n");
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_EQ(said([&] { domain.set("key", 1); }),
        "zarn-actions: others could look into " + folder + "; made it private\n");
    EXPECT_EQ(modeOf(folder), 0700U);
}

TEST_F(PlistSettingsTest, NothingIsSaidInOrdinaryUse)
{
    EXPECT_EQ(said([&] {
        domain.set("key", 1);
        domain.remove("key");
        EXPECT_EQ(domain.object("key"), std::nullopt);
    }),
        "");
}

TEST_F(PlistSettingsTest, ADamagedFileReadsAsEmptyAndIsKeptOnceAndTellsItInOneLine)
{
    put("<plist><dict><key>half");
    const auto text = said([&] {
        EXPECT_EQ(domain.object("half"), std::nullopt);
        EXPECT_EQ(domain.object("half"), std::nullopt);
        domain.set("key", 1);
        domain.set("key", 2);
    });
    EXPECT_EQ(linesOf(text), 1) << text;
    const auto files = names();
    ASSERT_EQ(files.size(), 3U);
    EXPECT_EQ(files[0], name + ".plist");
    EXPECT_TRUE(files[1].starts_with(name + ".plist.damaged-2")) << files[1];
    EXPECT_NE(text.find(files[1]), std::string::npos);
    EXPECT_EQ(contentsOf(folder + "/" + files[1]), "<plist><dict><key>half");
    EXPECT_EQ(domain.integer("key"), 2);
}

TEST_F(PlistSettingsTest, ReadingADamagedFileRenamesItOnce)
{
    put("damaged");
    std::string text;
    for (int start = 0; start < 3; ++start) {
        text += said([&] {
            PlistSettings other(folder, {}, nullptr);
            EXPECT_EQ(other.domain(name)->object("key"), std::nullopt);
        });
    }
    EXPECT_EQ(linesOf(text), 1) << text;
    const auto files = names();
    ASSERT_EQ(files.size(), 2U);
    EXPECT_TRUE(files[0].starts_with(name + ".plist.damaged-2")) << files[0];
    EXPECT_EQ(contentsOf(folder + "/" + files[0]), "damaged");
    EXPECT_EQ(files[1], name + ".plist.lock");
}

TEST_F(PlistSettingsTest, ADamagedFileIsNotRenamedWhileAnotherProgramHoldsTheLock)
{
    put("damaged");
    const auto lock = FileLock::acquire(path, std::chrono::seconds(1));
    ASSERT_TRUE(lock);
    EXPECT_EQ(said([&] { EXPECT_EQ(domain.object("key"), std::nullopt); }),
        "zarn-actions: settings read as empty: another program keeps " + path + ".lock locked\n");
    EXPECT_EQ(contentsOf(path), "damaged");
    // It may be writing a whole file at this moment.
    put(good);
    EXPECT_EQ(domain.string("username"), "kept");
    EXPECT_EQ(names(), (std::vector<std::string>{name + ".plist", name + ".plist.lock"}));
}

TEST_F(PlistSettingsTest, AFileDamagedAgainIsKeptAgain)
{
    for (const char* contents : {"first", "second"}) {
        put(contents);
        said([&] { domain.set("key", contents); });
    }
    std::string kept;
    for (const auto& file : names()) {
        if (file.find(".damaged-") != std::string::npos)
            kept += contentsOf(folder + "/" + file) + ";";
    }
    EXPECT_EQ(kept, "first;second;");
}

TEST_F(PlistSettingsTest, ASymbolicLinkIsRefusedAndItsTargetSurvives)
{
    const auto target = scratch.path() + "/target";
    std::ofstream(target) << good;
    ASSERT_EQ(::symlink(target.c_str(), path.c_str()), 0);
    const auto text = said([&] {
        EXPECT_EQ(domain.object("username"), std::nullopt);
        domain.set("key", 1);
    });
    EXPECT_NE(text.find("it is a symbolic link"), std::string::npos) << text;
    EXPECT_EQ(contentsOf(target), good);
    EXPECT_TRUE(fs::is_symlink(path));
}

TEST_F(PlistSettingsTest, AFolderInTheFilesPlaceIsRefused)
{
    fs::create_directory(path);
    const auto text = said([&] {
        EXPECT_EQ(domain.object("key"), std::nullopt);
        domain.set("key", 1);
    });
    EXPECT_NE(text.find("it is not a regular file"), std::string::npos) << text;
    EXPECT_TRUE(fs::is_directory(path));
}

TEST_F(PlistSettingsTest, AFileWhereTheFolderShouldBeIsTold)
{
    fs::remove_all(folder);
    std::ofstream(folder) << "file";
    EXPECT_EQ(linesOf(said([&] { domain.set("key", 1); })), 1);
    EXPECT_EQ(contentsOf(folder), "file");
    said([&] { EXPECT_EQ(settings.suite(name), nullptr); });
}

TEST_F(PlistSettingsTest, AFullDiskLeavesTheOldContentsAndSaysSo)
{
    put(good);
    EXPECT_EQ(domain.string("username"), "kept");
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{64, limit.rlim_max};
    Status status = Success{};
    // Standard error may be a file too: nothing is captured while files are limited.
    ::setrlimit(RLIMIT_FSIZE, &small);
    status = domain.trySet("username", "lost");
    ::setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, before);
    ASSERT_FALSE(status);
    EXPECT_NE(status.error().message.find("cannot write"), std::string::npos);
    EXPECT_EQ(contentsOf(path), good);
    EXPECT_EQ(domain.string("username"), "kept");
    EXPECT_FALSE(fs::exists(path + ".tmp"));
}

TEST_F(PlistSettingsTest, AStrayTemporaryFileIsGoneAfterTheNextWrite)
{
    std::ofstream(path + ".tmp") << "half";
    domain.set("key", 1);
    EXPECT_FALSE(fs::exists(path + ".tmp"));
    EXPECT_EQ(domain.integer("key"), 1);
}

TEST_F(PlistSettingsTest, ALockThatIsNeverGivenBackEndsTheWriteAndLaterOnesSooner)
{
    domain.set("key", 1);
    const int foreign = ::open((path + ".lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(foreign, LOCK_EX), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_NE(said([&] { domain.set("key", 2); }).find("locked"), std::string::npos);
    const auto first = std::chrono::steady_clock::now() - start;
    EXPECT_LT(first, std::chrono::seconds(8));
    const auto again = std::chrono::steady_clock::now();
    said([&] { domain.set("key", 3); });
    EXPECT_LT(std::chrono::steady_clock::now() - again, first / 2);
    EXPECT_EQ(domain.integer("key"), 1);
    ::close(foreign);
    domain.set("key", 4);
    EXPECT_EQ(domain.integer("key"), 4);
}

TEST_F(PlistSettingsTest, AfterAFailedReadNothingIsWrittenUntilOneSucceeds)
{
    fs::create_directory(path);
    said([&] { EXPECT_EQ(domain.object("username"), std::nullopt); });
    fs::remove(path);
    put(good);
    // What the caller holds now may stem from the failed read.
    EXPECT_FALSE(domain.trySet("username", ""));
    EXPECT_EQ(contentsOf(path), good);
    EXPECT_EQ(domain.string("username"), "kept");
    EXPECT_TRUE(domain.trySet("username", "new").ok());
}

TEST_F(PlistSettingsTest, AControlCharacterIsStoredAsTheReplacementCharacterAndTold)
{
    EXPECT_EQ(said([&] { domain.set("currentServer", "a\x01z"); }),
        "zarn-actions: setting currentServer holds characters that no settings file can; each is "
        "stored as U+FFFD\n");
    EXPECT_EQ(domain.string("currentServer"), "a\xEF\xBF\xBDz");
}

TEST_F(PlistSettingsTest, OnlyPlainNamesAreSuites)
{
    for (const char* bad : {"", ".", "..", "../evil", "a/b", ".hidden", "a b", "a\nb", "ä"})
        EXPECT_EQ(settings.suite(bad), nullptr) << bad;
    EXPECT_EQ(settings.suite(std::string(300, 'a')), nullptr);
    EXPECT_NE(settings.suite("group.R3V8N1P6WB.zarnie.SharedZPMA"), nullptr);
}

TEST_F(PlistSettingsTest, AnUnchangedFileIsNotParsedAgain)
{
    Value::Dictionary servers;
    for (int i = 0; i < 20000; ++i)
        servers["server " + std::to_string(i)]
            = Value::Dictionary{{"server", "https://s.example"}, {"date", Date{1740824100}}};
    domain.set("serversDict", servers);
    domain.set("key", 7);
    PlistSettings other(folder, {}, nullptr);
    auto& reader = *other.domain(name);
    const auto timed = [&] {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(reader.integer("key"), 7);
        return std::chrono::steady_clock::now() - start;
    };
    const auto first = timed();
    for (int i = 0; i < 100; ++i)
        timed();
    EXPECT_LT(timed() * 10, first);
}

TEST(LaunchArguments, AreKeysWithADashAndTheirValues)
{
    EXPECT_EQ(launchArgumentsOf({"-forceBasicAuth", "1", "file", "-text", "<plist/>", "-last"}),
        (Value::Dictionary{{"forceBasicAuth", "1"}, {"text", "<plist/>"}}));
    EXPECT_EQ(launchArgumentsOf({"--keychain=file", "-", "x", "--", "-a"}), Value::Dictionary{});
    EXPECT_EQ(launchArgumentsOf({"-n", "-5"}), (Value::Dictionary{{"n", "-5"}}));
}

} // namespace
} // namespace zarn::linux_backend
