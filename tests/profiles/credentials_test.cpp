// SPDX-License-Identifier: MIT
#include "profiles/credentials.h"

#include "platform/keychain.h"
#include "tests/profiles/login_fixture.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace zarn {

namespace {

constexpr const char* notFoundLine = "[credentials.checkExisting] lookup error occurred: -25300";
constexpr KeychainStatus withoutText = 1;

class CredentialsTest : public LoginTest {
protected:
    void save(const std::string& service, const std::string& account, const std::string& secret)
    {
        makeCredentials()->save(service, account, secret);
    }
    void saveNow(const std::string& service, const std::string& account, const std::string& secret)
    {
        save(service, account, secret);
        queue.runAll();
    }
};

TEST_F(CredentialsTest, AnItemIsWrittenWithEveryAttribute)
{
    connection.useApiClient = 0;
    saveNow("host", "admin", "s3cret");
    ASSERT_EQ(platform.keychain.items.size(), 1U);
    const auto& item = platform.keychain.items.front();
    EXPECT_EQ(item.accessGroup, "Q7X2M9K4TA.org.zarnie.zpshortcuts");
    EXPECT_EQ(item.service, "ZPMA-host");
    EXPECT_EQ(item.account, "admin");
    EXPECT_EQ(item.secret, (Data{'s', '3', 'c', 'r', 'e', 't'}));
}

TEST_F(CredentialsTest, AnEmptyServiceSavesNothing)
{
    save("", "admin", "secret");
    EXPECT_EQ(queue.pending(), 0U);
    EXPECT_TRUE(events().empty());
}

TEST_F(CredentialsTest, ASecretThatIsNotUtf8SavesNothing)
{
    save("host", "admin", "\xff\xfe");
    EXPECT_EQ(queue.pending(), 0U);
    EXPECT_TRUE(events().empty());
}

TEST_F(CredentialsTest, AnEmptySecretAndAnEmptyAccountAreSaved)
{
    saveNow("host", "", "");
    EXPECT_EQ(keychainItems(), (std::vector<std::string>{"zortcuts-apiClient-host/="}));
}

TEST_F(CredentialsTest, TheWriteHappensLaterOnTheQueue)
{
    save("host", "admin", "secret");
    EXPECT_EQ(queue.pending(), 1U);
    EXPECT_TRUE(events().empty());
    queue.runAll();
    EXPECT_EQ(keychainItems().size(), 1U);
}

TEST_F(CredentialsTest, WritesKeepTheOrderInWhichTheyWereSubmitted)
{
    save("host", "admin", "one");
    save("ZPMA-zortcuts", "zortcuts", "two");
    queue.runAll();
    EXPECT_EQ(keychainItems(),
        (std::vector<std::string>{
            "zortcuts-apiClient-host/admin=one", "ZPMA-zortcuts/zortcuts=two"}));
}

TEST_F(CredentialsTest, ThePrefixIsChosenByTheModeAtTheMomentOfTheCall)
{
    const struct {
        int useApiClient;
        const char* item;
    } rows[] = {
        {1, "zortcuts-apiClient-h/a=s"}, {0, "ZPMA-h/a=s"}, {2, "ZPMA-h/a=s"}, {-1, "ZPMA-h/a=s"}};
    for (const auto& row : rows) {
        platform.keychain.items.clear();
        connection.useApiClient = row.useApiClient;
        save("h", "a", "s");
        connection.useApiClient = row.useApiClient == 1 ? 0 : 1; // Too late to matter.
        queue.runAll();
        EXPECT_EQ(keychainItems(), (std::vector<std::string>{row.item}));
    }
}

TEST_F(CredentialsTest, OnlyTheExactServiceOfTheCurrentProfileIsNotPrefixed)
{
    connection.useApiClient = 0;
    saveNow("zpma-zortcuts", "a", "s");
    EXPECT_EQ(keychainItems(), (std::vector<std::string>{"ZPMA-zpma-zortcuts/a=s"}));
}

TEST_F(CredentialsTest, SecretsAreComparedExactly)
{
    storeSecret("zortcuts-apiClient-host", "admin", "secret");
    saveNow("host", "admin", "Secret");
    EXPECT_EQ(keychainItems(), (std::vector<std::string>{"zortcuts-apiClient-host/admin=Secret"}));
}

TEST_F(CredentialsTest, TheUpdateNamesNoAccountAndSoChangesTheFirstItemOfTheService)
{
    storeSecret("zortcuts-apiClient-host", "first", "1");
    storeSecret("zortcuts-apiClient-host", "second", "2");
    saveNow("host", "second", "new");
    EXPECT_EQ(keychainItems(),
        (std::vector<std::string>{
            "zortcuts-apiClient-host/first=new", "zortcuts-apiClient-host/second=2"}));
}

TEST_F(CredentialsTest, OnlyTheLookUpOfOneAccountLeavesTheDatabaseOpen)
{
    storeSecret("zortcuts-apiClient-host", "admin", "old");
    saveNow("host", "admin", "new");
    makeCredentials()->retrieve("host");
    const auto& queries = platform.keychain.queries;
    ASSERT_EQ(queries.size(), 3U);
    EXPECT_EQ(queries[0].account, "admin"); // checkExisting
    EXPECT_FALSE(queries[0].useDataProtectionKeychain);
    EXPECT_EQ(queries[1].account, std::nullopt); // update
    EXPECT_TRUE(queries[1].useDataProtectionKeychain);
    EXPECT_EQ(queries[2].account, std::nullopt); // lookupItem
    EXPECT_TRUE(queries[2].useDataProtectionKeychain);
    for (const auto& query : queries) {
        EXPECT_EQ(query.accessGroup, "Q7X2M9K4TA.org.zarnie.zpshortcuts");
        EXPECT_EQ(query.service, "zortcuts-apiClient-host");
    }
}

TEST_F(CredentialsTest, AFailedUpdateWithATextSaysSo)
{
    storeSecret("zortcuts-apiClient-host", "admin", "old");
    platform.keychain.updateStatus = keychain_status::userCanceled;
    saveNow("host", "admin", "new");
    EXPECT_EQ(logMessages(),
        (std::vector<std::string>{
            "keychain item for service host, account admin, failed to update."}));
}

TEST_F(CredentialsTest, AFailedUpdateWithoutATextReadsAsDone)
{
    storeSecret("zortcuts-apiClient-host", "admin", "old");
    platform.keychain.updateStatus = withoutText;
    saveNow("host", "admin", "new");
    EXPECT_EQ(logMessages(),
        (std::vector<std::string>{
            "keychain item for service host, account admin, has been updated."}));
}

TEST_F(CredentialsTest, AFailedAddWithATextIsLoggedWithIt)
{
    platform.keychain.addStatus = keychain_status::notAvailable;
    saveNow("host", "admin", "secret");
    EXPECT_EQ(logMessages(),
        (std::vector<std::string>{
            notFoundLine, "Write failed for service host, account admin: There is no keychain."}));
}

TEST_F(CredentialsTest, AFailedAddWithoutATextIsNotLogged)
{
    platform.keychain.addStatus = withoutText;
    saveNow("host", "admin", "secret");
    EXPECT_EQ(logMessages(), (std::vector<std::string>{notFoundLine}));
}

TEST_F(CredentialsTest, EachItemThatIsNotStoredIsReportedWithItsCause)
{
    std::vector<std::string> causes;
    const auto save = [&](const std::string& service) {
        std::make_shared<Credentials>(
            Credentials::Deps{platform.keychain, queue, logFile, connection,
                [&](const auto& cause) { causes.push_back(cause); }})
            ->save(service, "admin", "secret");
        queue.runAll();
    };
    save("stored");
    save("stored");
    EXPECT_EQ(causes, std::vector<std::string>{});
    storeSecret("zortcuts-apiClient-old", "admin", "old");
    platform.keychain.updateStatus = keychain_status::userCanceled;
    save("old");
    platform.keychain.addStatus = keychain_status::notAvailable;
    save("new");
    platform.keychain.addStatus = withoutText;
    save("new");
    EXPECT_EQ(causes,
        (std::vector<std::string>{"The keyring did not take the secret: The user refused.",
            "The keyring did not take the secret: There is no keychain.",
            "The keyring did not take the secret."}));
}

TEST_F(CredentialsTest, LogLinesNameTheServiceAsItWasPassed)
{
    platform.keychain.addStatus = keychain_status::userCanceled;
    saveNow("ZPMA-zortcuts", "zortcuts", "secret");
    EXPECT_EQ(logMessages().back(),
        "Write failed for service ZPMA-zortcuts, account zortcuts: The user refused.");
}

TEST_F(CredentialsTest, NoLogLineHoldsASecret)
{
    for (const auto status : {keychain_status::userCanceled, withoutText}) {
        platform.keychain.addStatus = platform.keychain.updateStatus = status;
        storeSecret("zortcuts-apiClient-old", "admin", "an old secret");
        saveNow("old", "admin", "a new secret");
        saveNow("new", "admin", "a new secret");
    }
    ASSERT_FALSE(logMessages().empty());
    for (const auto& message : logMessages())
        EXPECT_EQ(message.find("secret"), std::string::npos) << message;
}

TEST_F(CredentialsTest, ALookUpThatFailsOtherwiseIsNotLoggedAndTheItemIsAdded)
{
    platform.keychain.copyStatus = withoutText;
    saveNow("host", "admin", "secret");
    EXPECT_EQ(keychainItems().size(), 1U);
    EXPECT_TRUE(logMessages().empty());
}

TEST_F(CredentialsTest, AnExistingItemIsFoundByNameAndAccount)
{
    storeSecret("ZPMA-host", "other", "o");
    storeSecret("ZPMA-host", "admin", "s");
    EXPECT_EQ(makeCredentials()->checkExisting("ZPMA-host", "admin"), (AccountMap{{"admin", "s"}}));
    EXPECT_TRUE(logMessages().empty());
    EXPECT_TRUE(makeCredentials()->checkExisting("host", "admin").empty());
    EXPECT_EQ(logMessages(), (std::vector<std::string>{notFoundLine}));
}

TEST_F(CredentialsTest, LookingForOneAccountForgetsTheLastOne)
{
    storeSecret("ZPMA-host", "first", "1");
    storeSecret("ZPMA-host", "second", "2");
    const auto credentials = makeCredentials();
    EXPECT_EQ(credentials->checkExisting("ZPMA-host", "first"), (AccountMap{{"first", "1"}}));
    EXPECT_EQ(credentials->checkExisting("ZPMA-host", "second"), (AccountMap{{"second", "2"}}));
    EXPECT_TRUE(credentials->checkExisting("ZPMA-host", "third").empty());
}

TEST_F(CredentialsTest, RetrievingTwiceWithOneInstanceKeepsBothAccounts)
{
    storeSecret("zortcuts-apiClient-a", "id of a", "1");
    storeSecret("zortcuts-apiClient-b", "id of b", "2");
    const auto credentials = makeCredentials();
    EXPECT_EQ(credentials->retrieve("a"), (AccountMap{{"id of a", "1"}}));
    EXPECT_EQ(credentials->retrieve("b"), (AccountMap{{"id of a", "1"}, {"id of b", "2"}}));
    EXPECT_TRUE(credentials->retrieve("nowhere").empty());
}

/// A keychain whose answers to a look-up are not what they should be.
class OddKeychain final : public Keychain {
public:
    KeychainStatus add(const KeychainItem&) override { return keychain_status::notAvailable; }
    KeychainStatus update(const KeychainQuery&, const Data&) override
    {
        return keychain_status::notAvailable;
    }
    KeychainMatch copyMatching(const KeychainQuery&) override { return answer; }
    std::optional<std::string> messageText(KeychainStatus) const override { return std::nullopt; }
    bool isWaitingForUser() const override { return false; }
    void setWaitObserver(WaitObserver) override { }

    KeychainMatch answer;
};

TEST_F(CredentialsTest, AnAnswerCountsOnlyWithAStatusOfZeroAndAnItem)
{
    OddKeychain odd;
    const KeychainItem item{"g", "s", "a", {'x'}};
    for (const auto& answer : {KeychainMatch{keychain_status::success, std::nullopt},
             KeychainMatch{keychain_status::notAvailable, item}, KeychainMatch{1, item}}) {
        odd.answer = answer;
        const auto credentials
            = std::make_shared<Credentials>(Credentials::Deps{odd, queue, logFile, connection});
        EXPECT_TRUE(credentials->retrieve("host").empty());
        EXPECT_TRUE(credentials->checkExisting("ZPMA-host", "a").empty());
    }
    EXPECT_TRUE(logMessages().empty());
}

TEST_F(CredentialsTest, AStoredSecretThatIsNotUtf8ReadsAsNone)
{
    storeSecret("zortcuts-apiClient-host", "admin", "\xff");
    EXPECT_TRUE(makeCredentials()->retrieve("host").empty());
    EXPECT_TRUE(makeCredentials()->checkExisting("zortcuts-apiClient-host", "admin").empty());
    EXPECT_TRUE(logMessages().empty());
}

TEST_F(CredentialsTest, TheFirstItemOfAServiceIsRetrievedWithItsAccount)
{
    storeSecret("zortcuts-apiClient-host", "first", "1");
    storeSecret("zortcuts-apiClient-host", "second", "2");
    EXPECT_EQ(makeCredentials()->retrieve("host"), (AccountMap{{"first", "1"}}));
}

TEST_F(CredentialsTest, RetrievingSeesTheEntriesOfItsModeOnly)
{
    storeSecret("ZPMA-host", "admin", "password");
    storeSecret("zortcuts-apiClient-host", "id", "secret");
    connection.useApiClient = 0;
    EXPECT_EQ(makeCredentials()->retrieve("host"), (AccountMap{{"admin", "password"}}));
    connection.useApiClient = 1;
    EXPECT_EQ(makeCredentials()->retrieve("host"), (AccountMap{{"id", "secret"}}));
}

TEST_F(CredentialsTest, AFailedRetrieveIsEmptyAndNotLogged)
{
    for (const auto status : {keychain_status::itemNotFound, keychain_status::notAvailable,
             keychain_status::userCanceled, withoutText}) {
        platform.keychain.copyStatus = status;
        EXPECT_TRUE(makeCredentials()->retrieve("host").empty());
    }
    EXPECT_TRUE(logMessages().empty());
}

TEST_F(CredentialsTest, ARetrieveRightAfterASaveReadsTheOldValue)
{
    storeSecret("zortcuts-apiClient-host", "admin", "old");
    save("host", "admin", "new");
    EXPECT_EQ(makeCredentials()->retrieve("host"), (AccountMap{{"admin", "old"}}));
    queue.runAll();
    EXPECT_EQ(makeCredentials()->retrieve("host"), (AccountMap{{"admin", "new"}}));
}

TEST_F(CredentialsTest, ItemsOfAnotherAccessGroupAreNotSeen)
{
    platform.keychain.items.push_back({"another group", "zortcuts-apiClient-host", "a", {'s'}});
    EXPECT_TRUE(makeCredentials()->retrieve("host").empty());
}

/// A queue with a thread of its own, as in the real program.
class ThreadedQueue final : public SerialQueue {
public:
    ~ThreadedQueue() override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_ends = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }
    void async(std::function<void()> work) override
    {
        const std::lock_guard lock(m_mutex);
        m_work.push_back(std::move(work));
        m_changed.notify_all();
    }
    bool drain(std::chrono::milliseconds limit) override
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, limit, [this] { return m_work.empty() && !m_isBusy; });
    }
    const std::string& label() const override { return m_label; }

private:
    void run()
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return m_ends || !m_work.empty(); });
            if (m_work.empty())
                return;
            auto work = std::move(m_work.front());
            m_work.pop_front();
            m_isBusy = true;
            lock.unlock();
            work();
            work = nullptr;
            lock.lock();
            m_isBusy = false;
            m_changed.notify_all();
        }
    }

    std::string m_label = "com.zarn.zarn-shortcuts";
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_work;
    bool m_ends = false;
    bool m_isBusy = false;
    std::thread m_thread{[this] { run(); }};
};

TEST_F(CredentialsTest, WritesOutliveTheObjectsThatSubmittedThem)
{
    // No look-up may log: log and events are not shared with the main thread meanwhile.
    for (int i = 0; i < 50; ++i)
        storeSecret("zortcuts-apiClient-host" + std::to_string(i), "admin", "old");
    {
        ThreadedQueue threaded;
        for (int i = 0; i < 50; ++i)
            std::make_shared<Credentials>(
                Credentials::Deps{platform.keychain, threaded, logFile, connection})
                ->save("host" + std::to_string(i), "admin", "new" + std::to_string(i));
        EXPECT_TRUE(threaded.drain(std::chrono::seconds(30)));
    }
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(keychainItems().at(static_cast<std::size_t>(i)),
            "zortcuts-apiClient-host" + std::to_string(i) + "/admin=new" + std::to_string(i));
}

// --- Edge cases

class CredentialsEdgeCases : public CredentialsTest {
protected:
    std::vector<std::string> keychainCalls() const
    {
        std::vector<std::string> calls;
        for (const auto& event : platform.events) {
            if (event.starts_with("keychain"))
                calls.push_back(event);
        }
        return calls;
    }
};

TEST_F(CredentialsEdgeCases, SavingTheSameSecretTwiceWritesNothingTheSecondTime)
{
    saveNow("host", "id", "secret");
    events().clear();
    const auto logged = logMessages();
    saveNow("host", "id", "secret");
    EXPECT_EQ(events(), (std::vector<std::string>{"keychain copy zortcuts-apiClient-host/id"}));
    EXPECT_EQ(logMessages(), logged);
}

TEST_F(CredentialsEdgeCases, ANewPasswordReplacesTheOldOneWithoutALogLine)
{
    storeSecret("zortcuts-apiClient-host", "id", "old");
    saveNow("host", "id", "new");
    EXPECT_EQ(events(),
        (std::vector<std::string>{"keychain copy zortcuts-apiClient-host/id",
            "keychain update zortcuts-apiClient-host/*"}));
    EXPECT_EQ(keychainItems(), (std::vector<std::string>{"zortcuts-apiClient-host/id=new"}));
    EXPECT_TRUE(logMessages().empty());
}

TEST_F(CredentialsEdgeCases, TheSameHostSavedInBothModesHasTwoEntries)
{
    connection.useApiClient = 0;
    saveNow("host", "admin", "password");
    connection.useApiClient = 1;
    saveNow("host", "id", "secret");
    EXPECT_EQ(keychainItems(),
        (std::vector<std::string>{
            "ZPMA-host/admin=password", "zortcuts-apiClient-host/id=secret"}));
}

TEST_F(CredentialsEdgeCases, TheCurrentProfileIsStoredUnderItsOwnServiceInBothModes)
{
    for (const int mode : {0, 1}) {
        platform.keychain.items.clear();
        connection.useApiClient = mode;
        saveNow("ZPMA-zortcuts", "zortcuts", "text");
        EXPECT_EQ(keychainItems(), (std::vector<std::string>{"ZPMA-zortcuts/zortcuts=text"}));
    }
}

TEST_F(CredentialsEdgeCases, RetrievingAHostWithoutAnEntryIsEmptyAndLogsNothing)
{
    EXPECT_TRUE(makeCredentials()->retrieve("host").empty());
    EXPECT_TRUE(logMessages().empty());
}

TEST_F(CredentialsEdgeCases, SavingANewEntryLogsItsMissingLookUpOnceBeforeAdding)
{
    saveNow("host", "id", "secret");
    EXPECT_EQ(keychainCalls(),
        (std::vector<std::string>{"keychain copy zortcuts-apiClient-host/id",
            "keychain add zortcuts-apiClient-host/id"}));
    EXPECT_EQ(logMessages(), (std::vector<std::string>{notFoundLine}));
    EXPECT_EQ(events().back(), "keychain add zortcuts-apiClient-host/id");
}

TEST_F(CredentialsEdgeCases, ASecretBeyondAsciiComesBackUnchanged)
{
    const std::string secret = "p\xc3\xa4ssw\xc3\xb6rt \xe2\x82\xac \xf0\x9f\x94\x91";
    saveNow("host", "id", secret);
    EXPECT_EQ(makeCredentials()->retrieve("host"), (AccountMap{{"id", secret}}));
    EXPECT_EQ(platform.keychain.items.front().secret, Data(secret.begin(), secret.end()));
}

} // namespace

} // namespace zarn
