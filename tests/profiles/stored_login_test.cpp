// SPDX-License-Identifier: MIT
#include "profiles/stored_login.h"

#include "base/base64.h"
#include "profiles/server_update.h"
#include "tests/profiles/login_fixture.h"

namespace zarn {
namespace {

class StoredLoginTest : public LoginTest {
protected:
    std::string found(const std::string& name, const std::string& server)
    {
        StoredLogins logins({connection, domains, [this] { return makeCredentials(); }});
        const auto stored = logins.find(name, server);
        if (!stored)
            return "nothing";
        return (stored->usesApiClient ? "client " : "user ") + stored->username + "="
            + stored->secret;
    }
    void storeCurrent(const std::string& server, const std::string& username,
        const std::string& secret, int useApiClient)
    {
        ConnectionState state;
        state.serverUrl = server;
        state.username = username;
        state.password = secret;
        state.useApiClient = useApiClient;
        storeSecret("ZPMA-zortcuts", "zortcuts", base64Encoded(currentProfileJson(state)));
        actions().values["currentServer"] = "A";
        actions().values["username"] = username;
    }
};

TEST_F(StoredLoginTest, IsTheFirstItemOfTheHostOfTheKindInTheSettings)
{
    storeSecret("ZPMA-host", "admin", "user-secret");
    storeSecret("zortcuts-apiClient-host", "id", "client-secret");
    storeSecret("zortcuts-apiClient-host", "later", "x");
    EXPECT_EQ(found("A", "https://host:8443/"), "client id=client-secret");
    EXPECT_EQ(connection.useApiClient, 1);
    actions().values["useUsername"] = 1;
    EXPECT_EQ(found("A", "https://host:8443/"), "user admin=user-secret");
    EXPECT_EQ(connection.useApiClient, 0);
}

TEST_F(StoredLoginTest, IsOfTheOtherKindWhereThereIsNoneOfThatKind)
{
    storeSecret("ZPMA-host", "admin", "user-secret");
    EXPECT_EQ(found("A", "https://host"), "user admin=user-secret");
    EXPECT_EQ(connection.useApiClient, 0);
    EXPECT_EQ(found("A", "https://other"), "nothing");
}

TEST_F(StoredLoginTest, OfTheCurrentServerIsWhatWasProvedLast)
{
    storeSecret("zortcuts-apiClient-host", "first", "old");
    storeCurrent("https://host/", "second", "new", 1);
    EXPECT_EQ(found("A", "https://host/"), "client second=new");
    // Another profile of the same host has the first item.
    EXPECT_EQ(found("B", "https://host/"), "client first=old");
    // The entry may be about another server than the current one.
    EXPECT_EQ(found("A", "https://host:8443/"), "client first=old");
}

TEST_F(StoredLoginTest, OfTheCurrentServerKeepsItsOwnKind)
{
    storeCurrent("https://host", "admin", "pass", 0);
    EXPECT_EQ(found("A", "https://host"), "user admin=pass");
    EXPECT_EQ(connection.useApiClient, 0);
}

TEST_F(StoredLoginTest, ReadsSecretsThatNoParserCouldTakeApart)
{
    for (const std::string secret :
        {"", "\"", "\\", "\", \"useApiClient\":\"0\"}", "a\", \"password\":\"b", "l\nf", "ü"}) {
        platform.keychain.items.clear();
        storeCurrent("https://host", "me\", \"password\":\"", secret, 1);
        EXPECT_EQ(found("A", "https://host"), "client me\", \"password\":\"=" + secret);
    }
}

TEST_F(StoredLoginTest, IgnoresAnEntryThatIsNotWhatItShouldBe)
{
    for (const std::string entry : {"", "not Base64!", "eyJ9"}) {
        platform.keychain.items.clear();
        storeCurrent("https://host", "admin", "pass", 1);
        platform.keychain.items[0].secret = Data(entry.begin(), entry.end());
        storeSecret("zortcuts-apiClient-host", "id", "secret");
        EXPECT_EQ(found("A", "https://host"), "client id=secret") << entry;
    }
}

TEST_F(StoredLoginTest, ChangesNothingThatIsStored)
{
    storeSecret("ZPMA-host", "admin", "secret");
    const auto itemsBefore = keychainItems();
    const auto valuesBefore = actions().values;
    events().clear();
    (void)found("A", "https://host");
    EXPECT_EQ(keychainItems(), itemsBefore);
    EXPECT_EQ(actions().values, valuesBefore);
    EXPECT_EQ(logMessages(), std::vector<std::string>{});
}

} // namespace
} // namespace zarn
