// SPDX-License-Identifier: MIT
// A program for tests/platform/linux/*.py: uses the keychain as the window does, from the main
// thread, and prints for each call its status, how long it took and how long painting stood still.
#include "platform/linux/keychain/keychain_thread.h"
#include "tests/support/test_main_queue.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace zarn::linux_backend {
namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

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
        m_stall = 0;
        m_last = Clock::now();
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

/// What no keychain may do to the main thread, so that the measurement itself can be tested.
void standStill(const std::string& how, double milliseconds)
{
    if (how == "sleep")
        std::this_thread::sleep_for(std::chrono::duration<double, std::milli>(milliseconds));
    else
        for (const auto begin = Clock::now(); millisecondsSince(begin) < milliseconds;) { }
}

KeychainMatch perform(Keychain& keychain, const std::vector<std::string>& words)
{
    const auto& operation = words.at(0);
    const std::string group(keychainAccessGroup);
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
    KeychainThread::Limits limits;
    auto it = arguments.begin() + 1;
    if (const auto words = split(*it); words.at(0) == "prompt-limit") {
        limits.main.prompt = std::chrono::milliseconds(std::stoi(words.at(1)));
        ++it;
    }
    KeychainThread keychain(mainQueue, moduleStore(keychainOptions(choice)), limits);
    for (; it != arguments.end(); ++it) {
        const auto words = split(*it);
        if (words.at(0) == "pause") {
            // Until the test says that the next state has been reached.
            std::printf("paused\n");
            std::fflush(stdout);
            if (std::getchar() == EOF)
                return 1;
            continue;
        }
        mainQueue.begin();
        const auto begin = Clock::now();
        KeychainMatch match{keychain_status::success, std::nullopt};
        if (words.at(0) == "sleep" || words.at(0) == "spin")
            standStill(words.at(0), std::stod(words.at(1)));
        else
            match = perform(keychain, words);
        const double took = millisecondsSince(begin);
        mainQueue.paintedNow();
        std::string found = "-";
        if (match.item)
            found = match.item->account + "="
                + std::string(match.item->secret.begin(), match.item->secret.end());
        std::printf("%s %d %.1f %.1f %s\n", words[0].c_str(), match.status, took, mainQueue.stall(),
            found.c_str());
        std::fflush(stdout);
    }
    return 0;
}

} // namespace
} // namespace zarn::linux_backend

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fputs("usage: keychain_probe CHOICE [prompt-limit,MILLISECONDS] "
                   "OPERATION,SERVICE,ACCOUNT[,SECRET]|pause ...\n",
            stderr);
        return 2;
    }
    return zarn::linux_backend::run({argv + 1, argv + argc});
}
