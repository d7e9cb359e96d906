// SPDX-License-Identifier: MIT
// A program for tests/platform/linux/*.py: uses the keychain as the window does, from the main
// thread, and prints for each call its status, how long it took and how long painting stood still.
#include "platform/linux/lazy_keychain.h"
#include "tests/support/test_main_queue.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

namespace zarn::linux_backend {
namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

/// Sleeps 20 ms at a time, as a painting main thread does, on a thread of its own: what it is late
/// by is the machine's doing.
class Metronome {
public:
    Metronome()
        : m_thread([this] {
            while (!m_stopping) {
                m_beat = Clock::now();
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                m_worst = std::max(m_worst.load(), millisecondsSince(m_beat));
            }
        })
    {
    }
    ~Metronome()
    {
        m_stopping = true;
        m_thread.join();
    }
    /// The beat that has not ended yet counts too.
    double worst() const { return std::max(m_worst.load(), millisecondsSince(m_beat)); }

private:
    std::atomic<bool> m_stopping{false};
    std::atomic<double> m_worst{0};
    std::atomic<Clock::time_point> m_beat{Clock::now()};
    std::thread m_thread;
};

/// Records the longest time between two moments at which the main thread could have painted.
class WatchedMainQueue final : public MainQueue {
public:
    void post(std::function<void()> work) override { m_queue.post(std::move(work)); }
    bool isMainThread() const override { return m_queue.isMainThread(); }
    bool waitWhilePainting(
        const std::function<bool()>& done, std::chrono::milliseconds limit) override
    {
        return m_queue.waitWhilePainting(
            [&] {
                paintedNow();
                return done();
            },
            limit);
    }
    void wake() override { m_queue.wake(); }

    void begin()
    {
        m_last = Clock::now();
        m_stall = 0;
    }
    void paintedNow()
    {
        m_stall = std::max(m_stall, millisecondsSince(m_last));
        m_last = Clock::now();
    }
    double stall() const { return m_stall; }

private:
    TestMainQueue m_queue;
    Clock::time_point m_last;
    double m_stall = 0;
};

std::vector<std::string> split(const std::string& text)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, ',');)
        parts.push_back(part);
    return parts;
}

constexpr auto group = "Q7X2M9K4TA.org.zarnie.zpshortcuts";

KeychainMatch perform(Keychain& keychain, const std::vector<std::string>& words)
{
    const auto& operation = words.at(0);
    KeychainQuery query{group, words.at(1), std::nullopt, true};
    if (words.size() > 2 && !words[2].empty())
        query.account = words[2];
    if (operation == "copy")
        return keychain.copyMatching(query);
    const Data secret(words.at(3).begin(), words.at(3).end());
    if (operation == "add")
        return {keychain.add({group, words[1], words[2], secret}), std::nullopt};
    return {keychain.update(query, secret), std::nullopt};
}

int run(const std::vector<std::string>& arguments)
{
    const auto choice = keychainChoice(arguments.at(0)).value_or(KeychainChoice::Automatic);
    WatchedMainQueue mainQueue;
    LazyKeychain keychain(mainQueue, moduleStore(keychainOptions(choice)));
    for (auto it = arguments.begin() + 1; it != arguments.end(); ++it) {
        const auto words = split(*it);
        if (words.at(0) == "pause") {
            // Until the test says that the next state has been reached.
            std::printf("paused\n");
            std::fflush(stdout);
            if (std::getchar() == EOF)
                return 1;
            continue;
        }
        const Metronome metronome;
        mainQueue.begin();
        const auto begin = Clock::now();
        const auto match = perform(keychain, words);
        const double took = millisecondsSince(begin);
        mainQueue.paintedNow();
        std::string found = "-";
        if (match.item)
            found = match.item->account + "="
                + std::string(match.item->secret.begin(), match.item->secret.end());
        std::printf("%s %d %.1f %.1f %.1f %s\n", words[0].c_str(), match.status, took,
            mainQueue.stall(), metronome.worst(), found.c_str());
        std::fflush(stdout);
    }
    return 0;
}

} // namespace
} // namespace zarn::linux_backend

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fputs(
            "usage: keychain_probe CHOICE OPERATION,SERVICE,ACCOUNT[,SECRET]|pause ...\n", stderr);
        return 2;
    }
    return zarn::linux_backend::run({argv + 1, argv + argc});
}
