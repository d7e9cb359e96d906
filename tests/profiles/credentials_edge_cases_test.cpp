// SPDX-License-Identifier: MIT
#include "tests/profiles/flow_fixture.h"

namespace zarn {

namespace {

class CredentialsEdgeCases : public FlowTest {
protected:
    void save(const std::string& service, const std::string& account, const std::string& secret)
    {
        makeCredentials()->save(service, account, secret);
        queue.runAll();
    }
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
    save("host", "id", "secret");
    events().clear();
    save("host", "id", "secret");
    EXPECT_EQ(
        keychainCalls(), (std::vector<std::string>{"keychain copy zortcuts-apiClient-host/id"}));
}

TEST_F(CredentialsEdgeCases, ANewPasswordReplacesTheOldOneWithoutALogLine)
{
    storeSecret("zortcuts-apiClient-host", "id", "old");
    save("host", "id", "new");
    EXPECT_EQ(keychainCalls(),
        (std::vector<std::string>{"keychain copy zortcuts-apiClient-host/id",
            "keychain update zortcuts-apiClient-host/*"}));
    EXPECT_EQ(keychainItems(), (std::vector<std::string>{"zortcuts-apiClient-host/id=new"}));
    EXPECT_TRUE(logMessages().empty());
}

TEST_F(CredentialsEdgeCases, TheSameHostSavedInBothModesHasTwoEntries)
{
    connection.useApiClient = 0;
    save("host", "admin", "password");
    connection.useApiClient = 1;
    save("host", "id", "secret");
    EXPECT_EQ(keychainItems(),
        (std::vector<std::string>{
            "ZPMA-host/admin=password", "zortcuts-apiClient-host/id=secret"}));
}

TEST_F(CredentialsEdgeCases, TheCurrentProfileIsStoredUnderItsOwnServiceInBothModes)
{
    for (const int mode : {0, 1}) {
        platform.keychain.items.clear();
        connection.useApiClient = mode;
        save("ZPMA-zortcuts", "zortcuts", "text");
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
    save("host", "id", "secret");
    EXPECT_EQ(logMessages(),
        (std::vector<std::string>{"[credentials.checkExisting] lookup error occurred: -25300"}));
    EXPECT_EQ(events().back(), "keychain add zortcuts-apiClient-host/id");
}

TEST_F(CredentialsEdgeCases, ASecretBeyondAsciiComesBackUnchanged)
{
    const std::string secret = "p\xc3\xa4ssw\xc3\xb6rt \xe2\x82\xac \xf0\x9f\x94\x91";
    save("host", "id", secret);
    EXPECT_EQ(makeCredentials()->retrieve("host"), (AccountMap{{"id", secret}}));
    EXPECT_EQ(platform.keychain.items.front().secret, Data(secret.begin(), secret.end()));
}

} // namespace

} // namespace zarn
