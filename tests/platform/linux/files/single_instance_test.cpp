// SPDX-License-Identifier: MIT
#include "platform/linux/files/single_instance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zarn::linux_backend {
namespace {

using namespace std::chrono_literals;
using Outcome = SingleInstance::Outcome;

/// Another process that does `work`; its exit code is what `work` answers.
class OtherProcess {
public:
    explicit OtherProcess(const std::function<int(int toUs, int fromUs)>& work)
    {
        int up[2];
        int down[2];
        if (::pipe2(up, O_CLOEXEC) != 0 || ::pipe2(down, O_CLOEXEC) != 0)
            return;
        m_process = ::fork();
        if (m_process == 0) {
            ::close(down[1]);
            ::_exit(work(up[1], down[0]));
        }
        ::close(up[1]);
        ::close(down[0]);
        m_fromIt = up[0];
        m_toIt = down[1];
    }
    ~OtherProcess()
    {
        if (m_process > 0) {
            kill();
            ::waitpid(m_process, nullptr, 0);
        }
        ::close(m_fromIt);
        ::close(m_toIt);
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    /// The next byte it says; 0 when it has ended.
    char hear() const
    {
        char byte = 0;
        return ::read(m_fromIt, &byte, 1) == 1 ? byte : '\0';
    }
    void tell() const { EXPECT_EQ(::write(m_toIt, "x", 1), 1); }
    void kill() const { ::kill(m_process, SIGKILL); }
    int exitCode()
    {
        int status = 0;
        ::waitpid(m_process, &status, 0);
        m_process = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    /// Still there and not a zombie.
    bool isAlive() const { return ::waitpid(m_process, nullptr, WNOHANG) == 0; }

private:
    pid_t m_process = -1;
    int m_fromIt = -1;
    int m_toIt = -1;
};

char say(int descriptor, char byte)
{
    return ::write(descriptor, &byte, 1) == 1 ? byte : '\0';
}

void waitToBeTold(int descriptor)
{
    // A signal that is caught meanwhile is no answer. The thread sanitizer runs its handler only
    // between two calls, so that none may last.
    pollfd input{descriptor, POLLIN, 0};
    while (::poll(&input, 1, 10) <= 0) { }
    char byte = 0;
    [[maybe_unused]] const auto count = ::read(descriptor, &byte, 1);
}

class SingleInstanceTest : public testing::Test {
protected:
    SingleInstanceTest()
    {
        std::string name = std::filesystem::temp_directory_path() / "instance-XXXXXX";
        folder = ::mkdtemp(name.data());
        path = folder / "settings/zarn-actions.running";
    }
    ~SingleInstanceTest() override
    {
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
        std::filesystem::remove_all(folder);
    }

    /// A first copy that writes 'f', then 'r' for each raise; any input ends it properly.
    std::function<int(int, int)> firstCopy() const
    {
        return [path = path](int toUs, int fromUs) {
            static int pipe = -1;
            pipe = toUs;
            std::signal(SIGUSR1, [](int) { say(pipe, 'r'); });
            SingleInstance instance;
            if (instance.claim(path, 0ms, "") != Outcome::First)
                return 1;
            say(toUs, 'f');
            waitToBeTold(fromUs);
            instance.announceEnding();
            say(toUs, 'e');
            waitToBeTold(fromUs);
            return 0;
        };
    }

    std::filesystem::path folder;
    std::filesystem::path path;
};

TEST_F(SingleInstanceTest, TheFirstStartIsTheFirst)
{
    SingleInstance instance;
    EXPECT_EQ(instance.claim(path, 0ms, ""), Outcome::First);
    struct stat status { };
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    ASSERT_EQ(::stat(path.parent_path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
}

TEST_F(SingleInstanceTest, EachFurtherStartRaisesTheFirstOnce)
{
    OtherProcess first(firstCopy());
    ASSERT_EQ(first.hear(), 'f');
    for (int start = 0; start < 3; ++start) {
        SingleInstance instance;
        EXPECT_EQ(instance.claim(path, 5s, ""), Outcome::WindowOpen);
        EXPECT_EQ(first.hear(), 'r');
    }
    EXPECT_TRUE(first.isAlive());
}

class HandedToken : public SingleInstanceTest {
protected:
    HandedToken()
    {
        std::signal(SIGUSR1, [](int) {});
        EXPECT_EQ(first.claim(path, 0ms, ""), Outcome::First);
    }
    /// Starts another copy that was given this token.
    void start(const std::string& token) const
    {
        OtherProcess other([&](int, int) {
            SingleInstance second;
            return second.claim(path, 5s, token) == Outcome::WindowOpen ? 0 : 1;
        });
        EXPECT_EQ(other.exitCode(), 0);
    }
    /// Puts bytes where a start puts its token.
    void write(const std::string& bytes) const
    {
        // In another process: this one would lose its lock when it closes the file.
        OtherProcess other([&](int, int) {
            std::ofstream(path, std::ios::in | std::ios::out).seekp(8) << bytes;
            return 0;
        });
        EXPECT_EQ(other.exitCode(), 0);
    }

    SingleInstance first;
};

TEST_F(HandedToken, IsTakenOnce)
{
    EXPECT_EQ(first.takeActivationToken(), "");
    start("token-1");
    EXPECT_EQ(first.takeActivationToken(), "token-1");
    EXPECT_EQ(first.takeActivationToken(), "");
}

TEST_F(HandedToken, IsThatOfTheLastStart)
{
    start("a-longer-token-of-the-first-start");
    start("short");
    EXPECT_EQ(first.takeActivationToken(), "short");
}

TEST_F(HandedToken, IsUpTo255VisibleLetters)
{
    for (const auto& token : {std::string("!"), std::string("~"), std::string(255, 'x')}) {
        start(token);
        EXPECT_EQ(first.takeActivationToken(), token);
    }
    for (const auto& no : {std::string(), std::string(256, 'x'), std::string(100000, 'x'),
             std::string("two words"), std::string("two\nlines"), std::string("\x7f"),
             std::string("\x1f"), std::string("\xc3\xbc")}) {
        start(no);
        EXPECT_EQ(first.takeActivationToken(), "") << no.substr(0, 20);
    }
}

TEST_F(HandedToken, IsNotReadFromWhatAnotherProgramWrote)
{
    for (const auto& bytes :
        {std::string("unfinished"), std::string(1 << 20, 'x'), std::string(300, 'x') + "\n",
            std::string("\n"), std::string("\0\n", 2), std::string("two words\n")}) {
        write(bytes);
        EXPECT_EQ(first.takeActivationToken(), "") << bytes.substr(0, 20);
    }
    start("token");
    EXPECT_EQ(first.takeActivationToken(), "token");
}

TEST_F(HandedToken, LeavesNoTraceOnceItIsTaken)
{
    start("token");
    (void)first.takeActivationToken();
    std::ifstream file(path);
    const std::string left{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(left.find("token"), std::string::npos);
}

TEST_F(HandedToken, DoesNotHideThatTheFirstIsEnding)
{
    start("token");
    first.announceEnding();
    (void)first.takeActivationToken();
    OtherProcess other([&](int, int) {
        SingleInstance second;
        return second.claim(path, 20ms, "token") == Outcome::Busy ? 0 : 1;
    });
    EXPECT_EQ(other.exitCode(), 0);
}

TEST_F(SingleInstanceTest, AKilledFirstCopyLeavesThePlaceFree)
{
    OtherProcess first(firstCopy());
    ASSERT_EQ(first.hear(), 'f');
    first.kill();
    EXPECT_EQ(first.exitCode(), -SIGKILL);
    SingleInstance instance;
    EXPECT_EQ(instance.claim(path, 0ms, ""), Outcome::First);
}

TEST_F(SingleInstanceTest, AStartWhileTheFirstIsEndingWaitsAndBecomesTheFirst)
{
    OtherProcess first(firstCopy());
    ASSERT_EQ(first.hear(), 'f');
    first.tell();
    ASSERT_EQ(first.hear(), 'e');
    OtherProcess second([&](int toUs, int) {
        SingleInstance instance;
        say(toUs, 'w');
        return instance.claim(path, 10s, "") == Outcome::First ? 0 : 1;
    });
    ASSERT_EQ(second.hear(), 'w');
    EXPECT_TRUE(second.isAlive());
    first.tell();
    EXPECT_EQ(first.hear(), '\0') << "an ending copy is not raised";
    EXPECT_EQ(second.exitCode(), 0);
}

TEST_F(SingleInstanceTest, AnEndThatTakesTooLongIsNotWaitedForForEver)
{
    OtherProcess first(firstCopy());
    ASSERT_EQ(first.hear(), 'f');
    first.tell();
    ASSERT_EQ(first.hear(), 'e');
    SingleInstance instance;
    EXPECT_EQ(instance.claim(path, 60ms, ""), Outcome::Busy);
}

TEST_F(SingleInstanceTest, TheEndOfOneRunIsForgottenByTheNext)
{
    {
        OtherProcess first(firstCopy());
        ASSERT_EQ(first.hear(), 'f');
        first.tell();
        ASSERT_EQ(first.hear(), 'e');
        first.tell();
        ASSERT_EQ(first.exitCode(), 0);
    }
    OtherProcess second(firstCopy());
    ASSERT_EQ(second.hear(), 'f');
    SingleInstance third;
    EXPECT_EQ(third.claim(path, 5s, ""), Outcome::WindowOpen);
    EXPECT_EQ(second.hear(), 'r');
}

TEST_F(SingleInstanceTest, ManyStartsAtOnceHaveExactlyOneFirst)
{
    constexpr int starts = 8;
    std::vector<std::unique_ptr<OtherProcess>> copies;
    for (int i = 0; i < starts; ++i) {
        copies.push_back(std::make_unique<OtherProcess>([this](int toUs, int fromUs) {
            std::signal(SIGUSR1, [](int) {});
            waitToBeTold(fromUs);
            SingleInstance instance;
            const auto outcome = instance.claim(path, 5s, "");
            say(toUs, outcome == Outcome::First ? 'f' : outcome == Outcome::WindowOpen ? 'r' : '?');
            waitToBeTold(fromUs);
            return 0;
        }));
    }
    for (const auto& copy : copies)
        copy->tell();
    std::string outcomes;
    for (const auto& copy : copies)
        outcomes += copy->hear();
    EXPECT_EQ(std::count(outcomes.begin(), outcomes.end(), 'f'), 1) << outcomes;
    EXPECT_EQ(std::count(outcomes.begin(), outcomes.end(), 'r'), starts - 1) << outcomes;
}

TEST_F(SingleInstanceTest, ACommandEndsAtOnceWhileAWindowIsOpenAndDoesNotRaiseIt)
{
    OtherProcess first(firstCopy());
    ASSERT_EQ(first.hear(), 'f');
    SingleInstance command;
    EXPECT_EQ(command.claimForCommand(path, 10s), Outcome::WindowOpen);
    first.tell();
    EXPECT_EQ(first.hear(), 'e') << "it was raised";
}

TEST_F(SingleInstanceTest, ACommandWaitsForAWindowThatIsEnding)
{
    OtherProcess first(firstCopy());
    ASSERT_EQ(first.hear(), 'f');
    first.tell();
    ASSERT_EQ(first.hear(), 'e');
    SingleInstance command;
    EXPECT_EQ(command.claimForCommand(path, 60ms), Outcome::Busy);
    first.tell();
    EXPECT_EQ(first.exitCode(), 0);
    EXPECT_EQ(command.claimForCommand(path, 0ms), Outcome::First);
}

/// A command that holds the lock; told something, it gives it back, and ends when told again.
class HeldByCommand : public SingleInstanceTest {
protected:
    HeldByCommand() { EXPECT_EQ(command.hear(), 'c'); }

    OtherProcess command{[path = path](int toUs, int fromUs) {
        std::signal(SIGUSR1, SIG_IGN);
        SingleInstance instance;
        if (instance.claimForCommand(path, 10s) != Outcome::First)
            return 1;
        say(toUs, 'c');
        waitToBeTold(fromUs);
        instance.release();
        say(toUs, 'r');
        waitToBeTold(fromUs);
        return 0;
    }};
};

TEST_F(HeldByCommand, OtherCommandsAndWindowsWaitForItsEnd)
{
    OtherProcess window([this](int toUs, int) {
        SingleInstance instance;
        say(toUs, 'w');
        return instance.claim(path, 10s, "") == Outcome::First ? 0 : 1;
    });
    ASSERT_EQ(window.hear(), 'w');
    SingleInstance other;
    EXPECT_EQ(other.claimForCommand(path, 60ms), Outcome::Busy);
    EXPECT_TRUE(window.isAlive());
    command.tell();
    EXPECT_EQ(command.hear(), 'r');
    EXPECT_EQ(window.exitCode(), 0);
    EXPECT_TRUE(command.isAlive());
}

TEST_F(HeldByCommand, AWindowDoesNotWaitForEver)
{
    SingleInstance window;
    EXPECT_EQ(window.claim(path, 60ms, ""), Outcome::Busy);
    EXPECT_TRUE(command.isAlive());
}

TEST_F(HeldByCommand, AKilledCommandLeavesThePlaceFree)
{
    command.kill();
    EXPECT_EQ(command.exitCode(), -SIGKILL);
    SingleInstance window;
    EXPECT_EQ(window.claim(path, 0ms, ""), Outcome::First);
}

TEST_F(SingleInstanceTest, WhatAnEarlierHolderSaidOfItselfDoesNotCount)
{
    {
        OtherProcess first(firstCopy());
        ASSERT_EQ(first.hear(), 'f');
        first.kill();
        ASSERT_EQ(first.exitCode(), -SIGKILL);
    }
    // Locks the file, and says what it is only when asked to.
    OtherProcess slow([path = path](int toUs, int fromUs) {
        const int file = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
        struct flock lock { };
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        if (::fcntl(file, F_SETLK, &lock) != 0)
            return 1;
        say(toUs, 'l');
        waitToBeTold(fromUs);
        return 0;
    });
    ASSERT_EQ(slow.hear(), 'l');
    OtherProcess command([this](int toUs, int) {
        SingleInstance instance;
        say(toUs, 's');
        return instance.claimForCommand(path, 10s) == Outcome::First ? 0 : 1;
    });
    ASSERT_EQ(command.hear(), 's');
    slow.tell();
    EXPECT_EQ(command.exitCode(), 0) << "it took the last window's word";
}

TEST_F(SingleInstanceTest, ALinkInThePlaceOfTheFileIsNotFollowed)
{
    std::filesystem::create_directories(path.parent_path());
    std::filesystem::create_symlink(folder / "elsewhere", path);
    SingleInstance instance;
    EXPECT_EQ(instance.claim(path, 0ms, ""), Outcome::Failed);
    EXPECT_FALSE(std::filesystem::exists(folder / "elsewhere"));
}

TEST_F(SingleInstanceTest, AFolderThatCannotBeMadeIsAFailure)
{
    std::ofstream(folder / "settings") << "a file";
    SingleInstance instance;
    EXPECT_EQ(instance.claim(path, 0ms, ""), Outcome::Failed);
}

} // namespace
} // namespace zarn::linux_backend
