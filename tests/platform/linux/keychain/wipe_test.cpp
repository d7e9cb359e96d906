// SPDX-License-Identifier: MIT
// What the file keychain leaves in memory: neither its key nor a secret, in no page of the process.
#include "base/wipe.h"
#include "platform/linux/keychain/file_keychain.h"
#include "tests/support/begun_call.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace zarn::linux_backend {
namespace {

constexpr unsigned char mask = 0xA5;
// Memory that is given back gets marks of the allocator at its start.
constexpr std::size_t marks = 16;

/// A text that must not be seen, kept so that it is not itself what is found.
using Masked = std::string;

Masked masked(const Data& secret)
{
    Masked hidden;
    for (std::size_t i = marks; i < secret.size(); ++i)
        hidden += static_cast<char>(secret[i] ^ mask);
    return hidden;
}

Masked maskedFile(const std::string& path)
{
    Masked hidden;
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    unsigned char byte = 0;
    while (::read(file, &byte, 1) == 1)
        hidden += static_cast<char>(byte ^ mask);
    ::close(file);
    return hidden.size() > marks ? hidden.substr(marks) : "";
}

bool standsAt(const char* bytes, const Masked& hidden)
{
    return std::equal(hidden.begin(), hidden.end(), bytes,
        [](char one, char other) { return (one ^ static_cast<char>(mask)) == other; });
}

std::size_t countIn(std::string_view block, const Masked& hidden)
{
    std::size_t count = 0;
    const int first = static_cast<unsigned char>(hidden[0]) ^ mask;
    while (block.size() >= hidden.size()) {
        const auto* found = static_cast<const char*>(
            std::memchr(block.data(), first, block.size() - hidden.size() + 1));
        if (!found)
            break;
        count += standsAt(found, hidden) ? 1 : 0;
        block.remove_prefix(static_cast<std::size_t>(found - block.data()) + 1);
    }
    return count;
}

/// How often a secret stands in the memory that this process can write; `searched` grows by the
/// bytes looked at.
std::size_t occurrences(const Masked& hidden, std::uint64_t& searched)
{
    constexpr std::size_t blockSize = 1 << 16;
    // Sanitizers map shadows of many terabytes.
    constexpr unsigned long largest = 1UL << 30;
    EXPECT_GE(hidden.size(), 16U);
    std::size_t count = 0;
    std::string block;
    const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        unsigned long from = 0;
        unsigned long to = 0;
        std::array<char, 8> rights{};
        if (std::sscanf(line.c_str(), "%lx-%lx %7s", &from, &to, rights.data()) != 3
            || rights[1] != 'w' || to - from > largest)
            continue;
        for (auto at = from; at < to; at += blockSize) {
            // Into the next block as far as the secret could reach.
            block.assign(std::min(blockSize + hidden.size() - 1, to - at), '\0');
            const auto got = ::pread(memory, block.data(), block.size(), static_cast<off_t>(at));
            searched += got > 0 ? std::min<std::uint64_t>(blockSize, to - at) : 0U;
            count += got > 0 ? countIn({block.data(), static_cast<std::size_t>(got)}, hidden) : 0;
        }
    }
    ::close(memory);
    return count;
}

Data randomSecret(std::size_t size)
{
    std::random_device random;
    Data secret(size);
    for (auto& byte : secret)
        byte = static_cast<std::uint8_t>(random());
    return secret;
}

class KeychainMemory : public testing::Test {
protected:
    static KeychainQuery query(const std::string& account)
    {
        return {"group", "ZPMA-host", account, true};
    }
    void add(const std::string& account, const Data& secret)
    {
        KeychainItem item{"group", "ZPMA-host", account, secret};
        EXPECT_EQ(keychain.add(item), keychain_status::success);
        wipe(item.secret);
    }
    /// What callers get is theirs to wipe.
    void copy(const std::string& account)
    {
        auto match = keychain.copyMatching(query(account));
        ASSERT_TRUE(match.item);
        wipe(match.item->secret);
    }

    const ScratchFolder scratch;
    BegunCall call{[](const std::string&) {}};
    FileKeychain keychain{scratch.path() + "/data", scratch.path() + "/state", call};
};

TEST_F(KeychainMemory, TheScanFindsASecretThatIsThere)
{
    Data secret = randomSecret(64);
    const auto hidden = masked(secret);
    std::uint64_t searched = 0;
    EXPECT_GE(occurrences(hidden, searched), 1U);
    wipe(secret);
    EXPECT_EQ(occurrences(hidden, searched), 0U);
}

TEST_F(KeychainMemory, NoKeyAndNoSecretStaysInMemory)
{
    std::array<Masked, 4> hidden;
    const std::array<std::string, 3> accounts{"one", "two", "three"};
    for (std::size_t i = 0; i < accounts.size(); ++i) {
        Data secret = randomSecret(64 + i * 1000);
        hidden[i] = masked(secret);
        add(accounts[i], secret);
        wipe(secret);
    }
    Data secret = randomSecret(100);
    hidden[3] = masked(secret);
    EXPECT_EQ(keychain.update(query("two"), secret), keychain_status::success);
    wipe(secret);
    const auto key = maskedFile(scratch.path() + "/state/keychain.key");
    std::uint64_t searched = 0;
    std::size_t searches = 0;
    std::size_t found = 0;
    const auto expectNone = [&](const Masked& one, const std::string& what) {
        const auto count = occurrences(one, searched);
        EXPECT_EQ(count, 0U) << what;
        ++searches;
        found += count;
    };
    const auto expectNothing = [&](const std::string& when) {
        for (std::size_t i = 0; i < hidden.size(); ++i)
            expectNone(hidden[i], "secret " + std::to_string(i) + " after " + when);
        expectNone(key, "the key after " + when);
    };
    expectNothing("writing");
    for (const auto& account : accounts)
        copy(account);
    expectNothing("looking up");
    EXPECT_EQ(keychain.list().items.size(), 3U);
    expectNothing("listing");
    for (const auto& account : accounts)
        EXPECT_EQ(keychain.erase(query(account)), keychain_status::success);
    expectNothing("erasing");
    std::printf("Keychain memory: %zu searches through %.1f MiB in all, %zu found\n", searches,
        static_cast<double>(searched) / (1 << 20), found);
}

} // namespace
} // namespace zarn::linux_backend
