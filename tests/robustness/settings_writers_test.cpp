// SPDX-License-Identifier: MIT
#include "platform/linux/plist_settings.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace zarn::linux_backend {
namespace {

constexpr auto name = "group.R3V8N1P6WB.zarnie.SharedZPMA";
constexpr int writerCount = 8;

/// The exit status of the child is what `work` returns.
template <typename Work> pid_t inChild(Work work)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(work());
    return child;
}

int statusOf(pid_t child)
{
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string key(int writer, int change)
{
    return "writer " + std::to_string(writer) + " change " + std::to_string(change);
}

int write(const std::string& folder, int writer, int changes)
{
    PlistSettings settings(folder, {}, nullptr);
    auto& domain = *settings.domain(name);
    for (int i = 0; i < changes; ++i) {
        // A writer waits as long as the others are at work.
        Status status = Error{};
        for (int attempt = 0; attempt < 100 && !status; ++attempt)
            status = domain.trySet(key(writer, i), i);
        if (!status) {
            std::fprintf(
                stderr, "%s: %s\n", key(writer, i).c_str(), status.error().message.c_str());
            return 1;
        }
    }
    return 0;
}

/// Until it is killed: each look must show whole writes, and of each writer no fewer than before.
int readAllTheWhile(const std::string& folder)
{
    PlistSettings settings(folder, {}, nullptr);
    const auto& domain = *settings.domain(name);
    std::size_t most = 0;
    for (;;) {
        const auto values = domain.dictionary();
        if (values.size() < most)
            return 1;
        most = values.size();
        // As often as a write takes; without a pause two readers would leave the writers no
        // processor.
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

TEST(SettingsWriters, EveryChangeOfEightProcessesSurvivesAndNoReadIsTorn)
{
    const int changes = std::getenv("ZARN_LONG") ? 1000 : 100;
    const ScratchFolder scratch;
    const auto folder = scratch.path() + "/zarn-actions";
    std::vector<pid_t> readers;
    for (int i = 0; i < 2; ++i)
        readers.push_back(inChild([&] { return readAllTheWhile(folder); }));
    std::vector<pid_t> writers;
    for (int writer = 0; writer < writerCount; ++writer)
        writers.push_back(inChild([&] { return write(folder, writer, changes); }));
    for (const auto child : writers)
        EXPECT_EQ(statusOf(child), 0);
    for (const auto child : readers) {
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, WNOHANG), 0) << "a reader found something torn";
        ::kill(child, SIGKILL);
        ::waitpid(child, &status, 0);
    }
    PlistSettings settings(folder, {}, nullptr);
    Value::Dictionary expected;
    for (int writer = 0; writer < writerCount; ++writer) {
        for (int i = 0; i < changes; ++i)
            expected[key(writer, i)] = i;
    }
    const auto found = settings.domain(name)->dictionary();
    EXPECT_EQ(found.size(), expected.size());
    EXPECT_TRUE(found == expected);
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        files
            += entry.path().extension() == ".lock" || entry.path().extension() == ".plist" ? 1 : 99;
    EXPECT_EQ(files, 2U);
}

TEST(SettingsWriters, OnesThatWriteAllTheWhileKeepNobodyOut)
{
    const ScratchFolder scratch;
    const auto folder = scratch.path() + "/zarn-actions";
    std::vector<pid_t> busy;
    for (int i = 0; i < 3; ++i) {
        busy.push_back(inChild([&] {
            PlistSettings settings(folder, {}, nullptr);
            for (int change = 0;; ++change)
                settings.domain(name)->set("busy", change);
            return 0;
        }));
    }
    PlistSettings settings(folder, {}, nullptr);
    int written = 0;
    for (int i = 0; i < 50; ++i)
        written += settings.domain(name)->trySet("patient", i).ok() ? 1 : 0;
    EXPECT_EQ(written, 50);
    for (const auto child : busy) {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
}

TEST(SettingsWriters, AWriterThatIsKilledStallsNobody)
{
    const ScratchFolder scratch;
    const auto folder = scratch.path() + "/zarn-actions";
    PlistSettings settings(folder, {}, nullptr);
    auto& domain = *settings.domain(name);
    for (int round = 0; round < 20; ++round) {
        int ready[2];
        ASSERT_EQ(::pipe(ready), 0);
        const pid_t child = inChild([&] {
            PlistSettings own(folder, {}, nullptr);
            own.domain(name)->set("child", round);
            (void)!::write(ready[1], "x", 1);
            return write(folder, round, 1000000);
        });
        char byte = 0;
        ASSERT_EQ(::read(ready[0], &byte, 1), 1);
        ::kill(child, SIGKILL);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_TRUE(domain.trySet("mine", round).ok());
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
        EXPECT_EQ(domain.integer("mine"), round);
        EXPECT_EQ(domain.integer("child"), round);
        int status = 0;
        ::waitpid(child, &status, 0);
        ::close(ready[0]);
        ::close(ready[1]);
    }
    EXPECT_FALSE(std::filesystem::exists(folder + "/" + name + ".plist.tmp"));
}

} // namespace
} // namespace zarn::linux_backend
