// SPDX-License-Identifier: MIT
// The log is written from the main thread and from the keychain queue.
#include "tests/log/log_fixture.h"

#include <atomic>
#include <map>
#include <sstream>
#include <thread>

namespace zarn {
namespace {

using LogThreadsTest = LogTest;

TEST_F(LogThreadsTest, TheNameMayBeAskedForWhileAnotherThreadStartsAFile)
{
    constexpr int starts = 500;
    const std::string_view plain = "zarn-shortcuts.log";
    std::atomic<bool> isDone = false;
    std::thread starter([this, &isDone] {
        for (int i = 0; i < starts; ++i)
            file.startNewLogFile();
        isDone = true;
    });
    // Without a pause, so that hardly any change of the name goes unread.
    int torn = 0;
    while (!isDone) {
        const auto name = file.logFileName();
        torn += name.ends_with(plain) && (name.size() - plain.size()) % 16 == 0 ? 0 : 1;
    }
    starter.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(file.logFileName().size(), starts * 16 + plain.size());
}

TEST_F(LogThreadsTest, TheFolderIsTheSameForThreadsThatAskFirstAtOnce)
{
    std::vector<const std::string*> answers(8);
    std::vector<std::thread> threads;
    for (auto& answer : answers)
        threads.emplace_back([this, &answer] { answer = &file.logFolderPath(); });
    for (auto& thread : threads)
        thread.join();
    for (const auto* answer : answers) {
        EXPECT_EQ(answer, answers.front());
        EXPECT_EQ(*answer, folder);
    }
}

TEST_F(LogThreadsTest, LinesOfSeveralThreadsAreAllThereAndWhole)
{
    constexpr int writers = 4;
    constexpr int linesEach = 500;
    file.startNewLogFile();
    std::vector<std::thread> threads;
    for (int writer = 0; writer < writers; ++writer) {
        threads.emplace_back([this, writer] {
            WriteToLog own(file);
            for (int i = 0; i < linesEach; ++i)
                own.writeEntry("[writer] " + std::to_string(writer) + " " + std::to_string(i));
        });
    }
    for (auto& thread : threads)
        thread.join();

    ASSERT_EQ(files.files.size(), 1U);
    std::map<int, int> next;
    std::istringstream lines(files.files.begin()->second);
    for (std::string line; std::getline(lines, line);) {
        constexpr std::string_view start = "Sat Mar 01 10:15:00 [writer] ";
        ASSERT_TRUE(line.starts_with(start)) << line;
        std::istringstream rest(line.substr(start.size()));
        int writer = -1;
        int number = -1;
        ASSERT_TRUE(rest >> writer >> number) << line;
        // Each writer's own lines keep their order.
        EXPECT_EQ(number, next[writer]++) << line;
    }
    EXPECT_EQ(
        next, (std::map<int, int>{{0, linesEach}, {1, linesEach}, {2, linesEach}, {3, linesEach}}));
}

TEST_F(LogThreadsTest, AThreadThatStartsAFileLeavesTheLinesOfTheOthersAlone)
{
    constexpr int starts = 10;
    constexpr int lines = 500;
    file.startNewLogFile();
    std::thread starter([this] {
        for (int i = 0; i < starts; ++i)
            file.startNewLogFile();
    });
    WriteToLog own(file);
    for (int i = 0; i < lines; ++i)
        own.writeEntry("[line]");
    starter.join();

    // A line is lost when its file's name changes before it is created; one that was written stays.
    std::size_t written = 0;
    for (const auto& [path, contents] : files.files)
        written += contents.size();
    const std::size_t whole = std::string_view("Sat Mar 01 10:15:00 [line]\n").size();
    EXPECT_EQ(written % whole, 0U);
    EXPECT_GE(written / whole, std::size_t{lines - starts});
    EXPECT_LE(written / whole, std::size_t{lines});
}

} // namespace
} // namespace zarn
