// SPDX-License-Identifier: MIT
#include "platform/memory/memory_keychain.h"

#include <gtest/gtest.h>

namespace zarn::memory {
namespace {

class MemoryKeychainTest : public testing::Test {
protected:
    std::vector<std::string> events;
    MemoryKeychain keychain{events};
    const KeychainItem item{"group", "service", "account", Data{1}};
    const KeychainQuery query{"group", "service", std::nullopt, false};
};

TEST_F(MemoryKeychainTest, RecordsCallsWithTheirQueries)
{
    EXPECT_EQ(keychain.add(item), keychain_status::success);
    EXPECT_EQ(
        keychain.update({"group", "service", "account", true}, Data{2}), keychain_status::success);
    EXPECT_EQ(keychain.copyMatching(query).status, keychain_status::success);
    EXPECT_EQ(events,
        (std::vector<std::string>{"keychain add service/account", "keychain update service/account",
            "keychain copy service/*"}));
    ASSERT_EQ(keychain.queries.size(), 2U);
    EXPECT_TRUE(keychain.queries[0].useDataProtectionKeychain);
    EXPECT_FALSE(keychain.queries[1].useDataProtectionKeychain);
}

TEST_F(MemoryKeychainTest, AScriptedStatusChangesNothing)
{
    keychain.items = {item};
    keychain.addStatus = keychain_status::userCanceled;
    keychain.updateStatus = keychain_status::interactionNotAllowed;
    keychain.copyStatus = keychain_status::notAvailable;
    EXPECT_EQ(keychain.add({"group", "other", "account", Data{2}}), keychain_status::userCanceled);
    EXPECT_EQ(keychain.update(query, Data{3}), keychain_status::interactionNotAllowed);
    const auto match = keychain.copyMatching(query);
    EXPECT_EQ(match.status, keychain_status::notAvailable);
    EXPECT_EQ(match.item, std::nullopt);
    ASSERT_EQ(keychain.items.size(), 1U);
    EXPECT_EQ(keychain.items[0].secret, Data{1});
}

TEST_F(MemoryKeychainTest, TheObserverHearsEachChangeOfTheWaitOnce)
{
    std::vector<bool> heard;
    keychain.setWaitObserver([&](bool isWaiting) {
        EXPECT_EQ(keychain.isWaitingForUser(), isWaiting);
        heard.push_back(isWaiting);
    });
    EXPECT_FALSE(keychain.isWaitingForUser());
    for (const bool isWaiting : {false, true, true, false})
        keychain.setWaitingForUser(isWaiting);
    EXPECT_EQ(heard, (std::vector<bool>{true, false}));
}

} // namespace
} // namespace zarn::memory
