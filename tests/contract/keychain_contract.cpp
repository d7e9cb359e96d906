// SPDX-License-Identifier: MIT
#include "tests/contract/keychain_contract.h"

#include <atomic>
#include <thread>
#include <vector>

namespace zarn {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(KeychainContract);

std::string KeychainContract::found(Keychain& keychain, const KeychainQuery& query)
{
    const auto match = keychain.copyMatching(query);
    EXPECT_EQ(match.item.has_value(), match.status == keychain_status::success);
    if (!match.item)
        return std::to_string(match.status);
    EXPECT_EQ(match.item->service, query.service);
    EXPECT_EQ(match.item->accessGroup, query.accessGroup);
    return match.item->account + "="
        + std::string(match.item->secret.begin(), match.item->secret.end());
}

TEST_P(KeychainContract, AnAddedItemIsFoundWithItsSecret)
{
    EXPECT_EQ(keychain.add(item("ZPMA-host", "admin", "geheim")), keychain_status::success);
    EXPECT_EQ(found(query("ZPMA-host", "admin")), "admin=geheim");
}

TEST_P(KeychainContract, LookupOfNothingIsItemNotFound)
{
    EXPECT_EQ(found(query("ZPMA-host")), "-25300");
    EXPECT_EQ(found(query("ZPMA-host", "admin")), "-25300");
    EXPECT_EQ(keychain.add(item("ZPMA-host", "admin", "a")), keychain_status::success);
    EXPECT_EQ(found(query("ZPMA-host", "other")), "-25300");
    EXPECT_EQ(found(query("ZPMA-hos")), "-25300");
    EXPECT_EQ(found(query("ZPMA-host2")), "-25300");
}

TEST_P(KeychainContract, AddRefusesADuplicateAndChangesNothing)
{
    EXPECT_EQ(keychain.add(item("ZPMA-host", "admin", "first")), keychain_status::success);
    EXPECT_EQ(keychain.add(item("ZPMA-host", "admin", "second")), keychain_status::duplicateItem);
    EXPECT_EQ(found(query("ZPMA-host", "admin")), "admin=first");
}

TEST_P(KeychainContract, AccountServiceAndAccessGroupTellItemsApart)
{
    auto other = item("ZPMA-host", "admin", "4");
    other.accessGroup += ".other";
    EXPECT_EQ(keychain.add(item("ZPMA-host", "admin", "1")), keychain_status::success);
    EXPECT_EQ(keychain.add(item("ZPMA-host", "Admin", "2")), keychain_status::success);
    EXPECT_EQ(
        keychain.add(item("zortcuts-apiClient-host", "admin", "3")), keychain_status::success);
    EXPECT_EQ(keychain.add(other), keychain_status::success);
    EXPECT_EQ(found(query("ZPMA-host", "admin")), "admin=1");
    EXPECT_EQ(found(query("ZPMA-host", "Admin")), "Admin=2");
    EXPECT_EQ(found(query("zortcuts-apiClient-host", "admin")), "admin=3");
    EXPECT_EQ(found({other.accessGroup, "ZPMA-host", "admin", true}), "admin=4");
}

TEST_P(KeychainContract, LookupWithoutAnAccountFindsTheItemFirstWritten)
{
    EXPECT_EQ(keychain.add(item("ZPMA-host", "zoe", "1")), keychain_status::success);
    EXPECT_EQ(keychain.add(item("ZPMA-host", "adam", "2")), keychain_status::success);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(keychain.add(item("ZPMA-host", "a" + std::to_string(i), "x")),
            keychain_status::success);
    EXPECT_EQ(found(query("ZPMA-host")), "zoe=1");
}

TEST_P(KeychainContract, UpdateReplacesTheSecretAndKeepsAccountAndPlace)
{
    EXPECT_EQ(keychain.add(item("ZPMA-host", "first", "1")), keychain_status::success);
    EXPECT_EQ(keychain.add(item("ZPMA-host", "second", "2")), keychain_status::success);
    EXPECT_EQ(
        keychain.update(query("ZPMA-host", "first"), {'n', 'e', 'w'}), keychain_status::success);
    EXPECT_EQ(found(query("ZPMA-host")), "first=new");
    EXPECT_EQ(found(query("ZPMA-host", "second")), "second=2");
}

TEST_P(KeychainContract, UpdateWithoutAnAccountReplacesTheSecretOfTheItemFirstWritten)
{
    EXPECT_EQ(keychain.add(item("ZPMA-host", "first", "1")), keychain_status::success);
    EXPECT_EQ(keychain.add(item("ZPMA-host", "second", "2")), keychain_status::success);
    EXPECT_EQ(keychain.update(query("ZPMA-host"), {'3'}), keychain_status::success);
    EXPECT_EQ(found(query("ZPMA-host", "first")), "first=3");
    EXPECT_EQ(found(query("ZPMA-host", "second")), "second=2");
}

TEST_P(KeychainContract, UpdateOfNothingIsItemNotFoundAndAddsNothing)
{
    EXPECT_EQ(keychain.update(query("ZPMA-host"), {'1'}), keychain_status::itemNotFound);
    EXPECT_EQ(found(query("ZPMA-host")), "-25300");
    EXPECT_EQ(keychain.add(item("ZPMA-host", "admin", "1")), keychain_status::success);
    EXPECT_EQ(keychain.update(query("ZPMA-host", "other"), {'2'}), keychain_status::itemNotFound);
    EXPECT_EQ(found(query("ZPMA-host", "admin")), "admin=1");
}

TEST_P(KeychainContract, TheDataProtectionFlagSelectsNothing)
{
    EXPECT_EQ(keychain.add(item("ZPMA-host", "admin", "1")), keychain_status::success);
    auto without = query("ZPMA-host", "admin");
    without.useDataProtectionKeychain = false;
    EXPECT_EQ(found(without), "admin=1");
}

TEST_P(KeychainContract, SecretsAreKeptByteForByte)
{
    const std::vector<std::string> secrets{"", " ", "\n", "p\xC3\xA4ss\xF0\x9F\x94\x91", "\"\\{}'",
        std::string(100'000, 'x'), "trailing\n"};
    for (std::size_t i = 0; i < secrets.size(); ++i) {
        const auto account = std::to_string(i);
        ASSERT_EQ(keychain.add(item("bytes", account, secrets[i])), keychain_status::success);
        EXPECT_EQ(found(query("bytes", account)), account + "=" + secrets[i]);
    }
    Data every;
    for (unsigned i = 0; i < 256; ++i)
        every.push_back(static_cast<std::uint8_t>(i));
    ASSERT_EQ(keychain.update(query("bytes", "0"), every), keychain_status::success);
    const auto match = keychain.copyMatching(query("bytes", "0"));
    ASSERT_TRUE(match.item);
    EXPECT_EQ(match.item->secret, every);
}

TEST_P(KeychainContract, NamesAreKeptByteForByte)
{
    const std::vector<std::string> accounts{"", " ", "a b", "\xE4\xBD\xA0", "a=b;c", "tab\there",
        "line\nbreak", std::string(5000, 'a')};
    for (const auto& account : accounts) {
        ASSERT_EQ(keychain.add(item("names " + account, account, "s")), keychain_status::success);
        EXPECT_EQ(found(query("names " + account)), account + "=s");
        EXPECT_EQ(found(query("names " + account, account)), account + "=s");
    }
}

TEST_P(KeychainContract, NamesWithNulAreKeptAsTheyAreOrRefusedAndNeverTakenForTheirBeginning)
{
    const std::string service("ZPMA\0host", 9);
    const std::string account("ad\0min", 6);
    const std::vector<std::pair<std::string, std::string>> odd{
        {"ZPMA-host", account}, {service, "admin"}, {service, account}};
    for (const auto& [name, user] : {std::pair("ZPMA-host", "ad"), std::pair("ZPMA", "admin")})
        ASSERT_EQ(keychain.add(item(name, user, "before")), keychain_status::success);
    for (const auto& [name, user] : odd) {
        EXPECT_EQ(keychain.add(item(name, user, "odd")), keepsNul() ? 0 : -25292);
        EXPECT_EQ(found(query(name, user)), keepsNul() ? user + "=odd" : "-25300");
        EXPECT_EQ(keychain.update(query(name, user), {'n'}),
            keepsNul() ? keychain_status::success : keychain_status::itemNotFound);
        EXPECT_EQ(found(reopened(), query(name, user)), keepsNul() ? user + "=n" : "-25300");
    }
    EXPECT_EQ(found(query("ZPMA-host", "ad")), "ad=before");
    EXPECT_EQ(found(query("ZPMA", "admin")), "admin=before");
    if (!keepsNul()) {
        EXPECT_TRUE(keychain.messageText(-25292));
    }
}

TEST_P(KeychainContract, ItemsAreThereAfterARestart)
{
    EXPECT_EQ(keychain.add(item("ZPMA-host", "first", "1")), keychain_status::success);
    EXPECT_EQ(keychain.add(item("ZPMA-host", "second", "2")), keychain_status::success);
    EXPECT_EQ(keychain.update(query("ZPMA-host", "second"), {'3'}), keychain_status::success);
    EXPECT_EQ(found(reopened(), query("ZPMA-host")), "first=1");
    EXPECT_EQ(found(reopened(), query("ZPMA-host", "second")), "second=3");
}

TEST_P(KeychainContract, CallsFromManyThreadsAtOnceAllCount)
{
    std::atomic<int> added{0};
    std::atomic<int> refused{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            const auto own = "own" + std::to_string(i);
            if (keychain.add(item("same", "admin", own)) == keychain_status::success)
                ++added;
            else
                ++refused;
            EXPECT_EQ(keychain.add(item("many", own, own)), keychain_status::success);
            EXPECT_EQ(found(query("many", own)), own + "=" + own);
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(added, 1);
    EXPECT_EQ(refused, 3);
}

TEST_P(KeychainContract, EveryStatusHasAText)
{
    for (const auto status : {keychain_status::success, keychain_status::ioFailure,
             keychain_status::userCanceled, keychain_status::notAvailable,
             keychain_status::readOnly, keychain_status::invalidKeychain,
             keychain_status::duplicateItem, keychain_status::itemNotFound,
             keychain_status::noDefaultKeychain, keychain_status::interactionNotAllowed}) {
        const auto text = keychain.messageText(status);
        ASSERT_TRUE(text) << status;
        EXPECT_FALSE(text->empty()) << status;
        EXPECT_EQ(text->find('\n'), std::string::npos) << status;
        EXPECT_NE(text->back(), '.') << status;
    }
    EXPECT_EQ(keychain.messageText(1), std::nullopt);
}

} // namespace zarn
