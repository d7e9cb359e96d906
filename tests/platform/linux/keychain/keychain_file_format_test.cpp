// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/keychain_file_format.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>

namespace zarn::linux_backend {
namespace {

const std::string key(keychainKeySize, 'k');

KeychainContents sample()
{
    KeychainContents contents;
    contents.generation = 7;
    contents.items.push_back({{"group", "ZPMA-host", "admin", {'s', '3', 0, 0xFF}}, 100, 200});
    contents.items.push_back({{"group", "ZPMA-zortcuts", "zortcuts", {'b', '6', '4'}}, 101, 101});
    return contents;
}

std::string sampleFile()
{
    return sealKeychainFile(sample(), key);
}

TEST(KeychainFileFormat, OpensWhatItSealed)
{
    const auto opened = openKeychainFile(sampleFile(), key);
    ASSERT_EQ(opened.state, KeychainFileState::Opened);
    EXPECT_EQ(opened.contents.generation, 7U);
    ASSERT_EQ(opened.contents.items.size(), 2U);
    const auto& [item, created, modified] = opened.contents.items[0];
    EXPECT_EQ(item.accessGroup, "group");
    EXPECT_EQ(item.service, "ZPMA-host");
    EXPECT_EQ(item.account, "admin");
    EXPECT_EQ(item.secret, (Data{'s', '3', 0, 0xFF}));
    EXPECT_EQ(created, 100U);
    EXPECT_EQ(modified, 200U);
    EXPECT_EQ(opened.contents.items[1].item.service, "ZPMA-zortcuts");
}

TEST(KeychainFileFormat, HeaderIsTheDocumentedOne)
{
    const auto file = sampleFile();
    EXPECT_EQ(file.substr(0, 8), std::string("ZARNKCF\0", 8));
    EXPECT_EQ(file.substr(8, 8), std::string("\1\0\0\0\0\0\0\0", 8));
    EXPECT_EQ(file.substr(16, 8), std::string("\7\0\0\0\0\0\0\0", 8));
    // Header, the fields of the items, the tag; nothing else.
    EXPECT_EQ(file.size(), 48U + 4U + 2U * 32U + 5U + 9U + 5U + 4U + 5U + 13U + 8U + 3U + 16U);
}

TEST(KeychainFileFormat, NoNameAndNoSecretIsReadableInTheFile)
{
    const auto file = sampleFile();
    for (const auto* text : {"group", "ZPMA", "admin", "zortcuts", "b64"})
        EXPECT_EQ(file.find(text), std::string::npos) << text;
}

TEST(KeychainFileFormat, EveryWriteHasANonceOfItsOwn)
{
    EXPECT_NE(sampleFile().substr(24, 24), sampleFile().substr(24, 24));
}

TEST(KeychainFileFormat, EveryFlippedBitIsDetected)
{
    const auto file = sampleFile();
    std::size_t detected = 0;
    for (std::size_t bit = 0; bit < file.size() * 8; ++bit) {
        auto changed = file;
        changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ (1 << (bit % 8)));
        const auto opened = openKeychainFile(changed, key);
        const auto expected = bit < 64 ? KeychainFileState::Damaged
            : bit < 96                 ? KeychainFileState::UnknownVersion
                                       : KeychainFileState::Refused;
        EXPECT_EQ(opened.state, expected) << "bit " << bit;
        EXPECT_TRUE(opened.contents.items.empty()) << "bit " << bit;
        detected += opened.state != KeychainFileState::Opened ? 1U : 0U;
    }
    std::printf("Keychain file: %zu of %zu flipped bits detected\n", detected, file.size() * 8);
}

TEST(KeychainFileFormat, EveryFlippedBitOfTheKeyIsDetected)
{
    const auto file = sampleFile();
    std::size_t detected = 0;
    for (std::size_t bit = 0; bit < key.size() * 8; ++bit) {
        auto changed = key;
        changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ (1 << (bit % 8)));
        const auto state = openKeychainFile(file, changed).state;
        EXPECT_EQ(state, KeychainFileState::Refused);
        detected += state == KeychainFileState::Refused ? 1U : 0U;
    }
    std::printf(
        "Keychain file: %zu of %zu flipped bits of the key detected\n", detected, key.size() * 8);
    EXPECT_EQ(openKeychainFile(file, "").state, KeychainFileState::Refused);
    EXPECT_EQ(openKeychainFile(file, key + "x").state, KeychainFileState::Refused);
}

TEST(KeychainFileFormat, EveryTruncationIsDetected)
{
    const auto file = sampleFile();
    std::size_t detected = 0;
    for (std::size_t size = 0; size < file.size(); ++size) {
        const auto opened = openKeychainFile(file.substr(0, size), key);
        EXPECT_EQ(opened.state,
            size < keychainHeaderSize ? KeychainFileState::Damaged : KeychainFileState::Refused);
        detected += opened.state != KeychainFileState::Opened ? 1U : 0U;
    }
    std::printf("Keychain file: %zu of %zu truncations detected\n", detected, file.size());
    EXPECT_EQ(openKeychainFile(file + "x", key).state, KeychainFileState::Refused);
}

TEST(KeychainFileFormat, NoRandomMutationIsTakenForAKeychain)
{
    const auto file = sampleFile();
    std::mt19937 random(1);
    const int rounds = std::getenv("ZARN_LONG") ? 1'000'000 : 10'000;
    int changes = 0;
    for (int round = 0; round < rounds; ++round) {
        auto changed = file;
        for (auto count = 1 + random() % 8; count-- > 0;) {
            const auto at = random() % (changed.size() + 1);
            switch (random() % 3) {
            case 0:
                changed.insert(at, 1, static_cast<char>(random()));
                break;
            case 1:
                changed.erase(at, 1 + random() % 4);
                break;
            default:
                if (at < changed.size())
                    changed[at] = static_cast<char>(random());
            }
        }
        if (changed != file) {
            ASSERT_NE(openKeychainFile(changed, key).state, KeychainFileState::Opened) << round;
            ++changes;
        }
    }
    std::printf("Keychain file: %d random mutations, none opens\n", changes);
}

TEST(KeychainFileFormat, ContentsThatDoNotParseAreRefused)
{
    const auto items = plainKeychainItems(sample().items);
    std::vector<StoredItem> parsed;
    ASSERT_TRUE(parseKeychainItems(items.get(), parsed));
    for (std::size_t size = 0; size < items.get().size(); ++size) {
        parsed.clear();
        EXPECT_FALSE(parseKeychainItems(items.get().substr(0, size), parsed)) << size;
    }
    EXPECT_FALSE(parseKeychainItems(items.get() + "x", parsed));
    EXPECT_FALSE(parseKeychainItems("\xFF\xFF\xFF\xFF", parsed));
}

TEST(KeychainFileFormat, TooLargeContentsAreNotSealed)
{
    KeychainContents contents;
    contents.items.push_back({{"g", "s", "a", Data(keychainFileLimit)}, 0, 0});
    EXPECT_EQ(sealKeychainFile(contents, key), "");
}

TEST(KeychainFileFormat, KeysAreRandom)
{
    EXPECT_EQ(newKeychainKey().size(), keychainKeySize);
    EXPECT_NE(newKeychainKey(), newKeychainKey());
}

} // namespace
} // namespace zarn::linux_backend
