// SPDX-License-Identifier: MIT
#include "platform/linux/settings/plist_settings.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <thread>
#include <vector>

#include <csignal>
#include <sys/mman.h>
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

/// A counter that this process and its children share.
class SharedCounter {
public:
    SharedCounter()
        : m_value(new (::mmap(nullptr, sizeof(std::atomic<long>), PROT_READ | PROT_WRITE,
            MAP_SHARED | MAP_ANONYMOUS, -1, 0)) std::atomic<long>(0))
    {
    }
    ~SharedCounter() { ::munmap(m_value, sizeof *m_value); }
    SharedCounter(const SharedCounter&) = delete;
    SharedCounter& operator=(const SharedCounter&) = delete;
    void count() { ++*m_value; }
    long value() const { return *m_value; }

private:
    std::atomic<long>* m_value;
};

/// Until it is killed: each look must show whole writes, and of each writer no fewer than before.
int readAllTheWhile(const std::string& folder, SharedCounter& looks)
{
    PlistSettings settings(folder, {}, nullptr);
    const auto& domain = *settings.domain(name);
    std::size_t most = 0;
    for (;;) {
        const auto values = domain.dictionary();
        if (values.size() < most)
            return 1;
        most = values.size();
        looks.count();
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
    SharedCounter looks;
    std::vector<pid_t> readers;
    for (int i = 0; i < 2; ++i)
        readers.push_back(inChild([&] { return readAllTheWhile(folder, looks); }));
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
    std::size_t survived = 0;
    for (const auto& [which, value] : expected) {
        const auto it = found.find(which);
        survived += it != found.end() && it->second == value ? 1 : 0;
    }
    EXPECT_GT(looks.value(), 0);
    std::printf("Settings writers: %zu of %zu changes by %zu processes survive, %ld whole reads "
                "by %zu readers meanwhile\n",
        survived, expected.size(), writers.size(), looks.value(), readers.size());
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        files
            += entry.path().extension() == ".lock" || entry.path().extension() == ".plist" ? 1 : 99;
    EXPECT_EQ(files, 2U);
}

TEST(SettingsWriters, BesideOnesThatNeverPauseAWriteIsStoredOrReportedWithinItsLimit)
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
    auto& domain = *settings.domain(name);
    const int writes = std::getenv("ZARN_LONG") ? 500 : 50;
    int written = 0;
    std::optional<Value> stored;
    for (int i = 0; i < writes; ++i) {
        const auto start = std::chrono::steady_clock::now();
        const auto status = domain.trySet("patient", i);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
        if (status) {
            stored = i;
            ++written;
        } else {
            EXPECT_EQ(status.error().code, ErrorCode::Unavailable);
            EXPECT_EQ(
                status.error().message, "another program keeps " + domain.path() + ".lock locked");
        }
        EXPECT_EQ(domain.object("patient"), stored);
    }
    std::printf(
        "Settings writers: %d of %d writes beside %zu processes that write without a pause, "
        "the others reported\n",
        written, writes, busy.size());
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
    std::chrono::steady_clock::duration longest{};
    int killed = 0;
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
        longest = std::max(longest, std::chrono::steady_clock::now() - start);
        EXPECT_LT(longest, std::chrono::seconds(4));
        EXPECT_EQ(domain.integer("mine"), round);
        EXPECT_EQ(domain.integer("child"), round);
        int status = 0;
        ::waitpid(child, &status, 0);
        killed += WIFSIGNALED(status) ? 1 : 0;
        ::close(ready[0]);
        ::close(ready[1]);
    }
    EXPECT_FALSE(std::filesystem::exists(folder + "/" + name + ".plist.tmp"));
    std::printf("Settings writers: %d writers killed, the next write took %lld ms at most\n",
        killed,
        static_cast<long long>(
            std::chrono::duration_cast<std::chrono::milliseconds>(longest).count()));
}

} // namespace
} // namespace zarn::linux_backend
