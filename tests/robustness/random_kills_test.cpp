// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/file_keychain.h"
#include "platform/linux/settings/plist_settings.h"
#include "tests/robustness/churn.h"
#include "tests/support/begun_call.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <map>
#include <random>
#include <sstream>
#include <thread>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace zarn {
namespace {

using namespace linux_backend;

constexpr auto profilesSuite = "group.R3V8N1P6WB.zarnie.SharedZPMA";

/// What must be stored, from the acts that were reported as done; and the one that was under way.
class Expectation {
public:
    void read(const std::string& journal)
    {
        m_pending.clear();
        std::istringstream lines(journal);
        for (std::string line; std::getline(lines, line);) {
            // The last line may be cut.
            if (lines.eof())
                break;
            if (line != "done") {
                m_pending = line;
                continue;
            }
            apply(m_pending);
            m_pending.clear();
            ++acts;
        }
    }

    void check(const Value::Dictionary& stored, const std::vector<StoredItem>& items)
    {
        std::istringstream words(m_pending);
        std::string act;
        int pending = -1;
        std::string pendingSecret;
        words >> act >> pending >> pendingSecret;
        for (int number = 0; number < churnedProfiles; ++number) {
            SCOPED_TRACE(churnedName(number) + ", under way: " + m_pending);
            const bool isChanging = number == pending && act != "select";
            const auto profile = stored.find(churnedName(number));
            const bool isThere = profile != stored.end();
            if (!isChanging) {
                EXPECT_EQ(isThere, m_secrets.contains(number));
            }
            if (isThere) {
                EXPECT_EQ(
                    stringMember(*profile->second.dictionary(), "server"), churnedServer(number));
            }
            const auto secret = secretOf(items, number);
            if (isChanging && secret == pendingSecret)
                m_written[number] = pendingSecret;
            EXPECT_EQ(secret, m_written[number]);
            // From here on this is what is there.
            if (isChanging && isThere)
                m_secrets[number] = m_written[number];
            else if (isChanging)
                m_secrets.erase(number);
        }
        EXPECT_EQ(stored.size(), m_secrets.size());
    }

    std::size_t acts = 0;

private:
    void apply(const std::string& line)
    {
        std::istringstream words(line);
        std::string act;
        int number = -1;
        std::string secret;
        words >> act >> number >> secret;
        if (act == "add")
            m_secrets[number] = m_written[number] = secret;
        else if (act == "remove")
            m_secrets.erase(number);
    }

    // The item stays when a profile is removed.
    static std::string secretOf(const std::vector<StoredItem>& items, int number)
    {
        const auto service = "zortcuts-apiClient-host" + std::to_string(number) + ".example";
        std::string found;
        for (const auto& [item, created, modified] : items) {
            if (item.service == service && item.account == churnedAccount)
                found += std::string(item.secret.begin(), item.secret.end());
        }
        return found;
    }

    std::map<int, std::string> m_secrets;
    std::map<int, std::string> m_written;
    std::string m_pending;
};

/// A churn that is killed after `life`: what it reported.
std::string journalOfAKilledChurn(
    const ChurnFolders& folders, std::uint32_t seed, std::chrono::microseconds life)
{
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        return "";
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        churnUntilKilled(folders, seed, ends[1]);
    }
    ::close(ends[1]);
    std::this_thread::sleep_for(life);
    ::kill(child, SIGKILL);
    std::string journal;
    std::array<char, 4096> buffer;
    for (ssize_t count = 0; (count = ::read(ends[0], buffer.data(), buffer.size())) > 0;)
        journal.append(buffer.data(), static_cast<std::size_t>(count));
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)
        << "it ended by itself with " << WEXITSTATUS(status);
    return journal;
}

std::vector<std::string> filesIn(const std::string& top)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(top)) {
        if (entry.is_regular_file() && entry.path().string().find("/Library/") == std::string::npos)
            names.push_back(entry.path().filename().string());
    }
    return names;
}

/// One more write to every file; then nothing but the files themselves may be there.
void writeOnceMore(const ChurnFolders& folders, int round)
{
    PlistSettings settings(folders.settings, {}, nullptr);
    for (const auto* name :
        {profilesSuite, "group.Q7X2M9K4TA.zarnactions", PlistSettings::standardIdentifier})
        EXPECT_TRUE(settings.domain(name)->trySet("round", round).ok());
    BegunCall call;
    FileKeychain keychain(folders.data, folders.state, call);
    EXPECT_EQ(keychain.add({"group", "round", std::to_string(round), {}}), 0);
    EXPECT_EQ(keychain.erase({"group", "round", std::to_string(round)}), 0);
    for (const auto& name : filesIn(folders.home))
        EXPECT_TRUE(name == "keychain" || name == "keychain.key" || name.ends_with(".lock")
            || name.ends_with(".plist"))
            << name << " was left behind";
}

void checkWhatIsLeft(const ChurnFolders& folders, Expectation& expected)
{
    testing::internal::CaptureStderr();
    PlistSettings settings(folders.settings, {}, nullptr);
    const auto profiles = settings.domain(profilesSuite)->object("serversDict");
    for (const auto* name : {"group.Q7X2M9K4TA.zarnactions", PlistSettings::standardIdentifier})
        settings.domain(name)->dictionary();
    BegunCall call;
    const FileKeychain keychain(folders.data, folders.state, call);
    KeychainContents contents;
    if (keychain.exists()) {
        EXPECT_EQ(keychain.read(contents), 0);
    }
    expected.check(profiles ? *profiles->dictionary() : Value::Dictionary{}, contents.items);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "something does not parse";
}

TEST(RandomKills, EveryProfileAndItsSecretSurviveWhateverWasUnderWay)
{
    const int rounds = std::getenv("ZARN_LONG") ? 2000 : 100;
    const ScratchFolder scratch;
    const ChurnFolders folders(scratch.path());
    Expectation expected;
    std::mt19937 random(20250301);
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const std::chrono::microseconds life(random() % 150'000);
        expected.read(journalOfAKilledChurn(folders, static_cast<std::uint32_t>(round), life));
        checkWhatIsLeft(folders, expected);
        writeOnceMore(folders, round);
    }
    // Killed before it did anything, again and again, would prove nothing.
    EXPECT_GT(expected.acts, static_cast<std::size_t>(rounds));
    std::printf("%d kills, %zu acts\n", rounds, expected.acts);
}

} // namespace
} // namespace zarn
