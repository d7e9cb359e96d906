// SPDX-License-Identifier: MIT
// The keychain file. The input is read as a whole file (which nobody without the key can make) and
// as the items inside one (which a program with the key could have written badly).
#include "platform/linux/keychain/keychain_file_format.h"

#include <cstdio>
#include <cstdlib>

using namespace zarn::linux_backend;

namespace {

const std::string key(keychainKeySize, 'k');

void expect(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

bool same(const std::vector<StoredItem>& a, const std::vector<StoredItem>& b)
{
    return plainKeychainItems(a).get() == plainKeychainItems(b).get();
}

void checkFile(std::string_view input)
{
    const auto opened = openKeychainFile(input, key);
    const bool hasHeader = input.size() >= keychainHeaderSize
        && input.substr(0, 8) == std::string_view("ZARNKCF\0", 8);
    expect((opened.state == KeychainFileState::Damaged) == !hasHeader, "damaged");
    expect(opened.state == KeychainFileState::Opened || opened.contents.items.empty(),
        "contents of a file that was not opened");
    // The seeds hold a file that was sealed with this key; all others must be refused.
    if (opened.state != KeychainFileState::Opened)
        return;
    KeychainContents copy;
    copy.generation = opened.contents.generation;
    copy.items = opened.contents.items;
    expect(sealKeychainFile(copy, key).size() == input.size(), "size of a file that was opened");
}

void checkItems(std::string_view input)
{
    KeychainContents contents;
    if (!parseKeychainItems(input, contents.items))
        return;
    // One way to write each keychain: nothing can hide between the fields.
    expect(plainKeychainItems(contents.items).get() == input, "items are not written as they were");
    contents.generation = input.size();
    const auto file = sealKeychainFile(contents, key);
    const auto opened = openKeychainFile(file, key);
    expect(opened.state == KeychainFileState::Opened, "a sealed file does not open");
    expect(opened.contents.generation == input.size(), "generation");
    expect(same(opened.contents.items, contents.items), "items");
    auto flipped = file;
    const auto at = input.size() % file.size();
    flipped[at] = static_cast<char>(flipped[at] ^ 1);
    expect(openKeychainFile(flipped, key).state != KeychainFileState::Opened, "a flipped bit");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    checkFile(input);
    checkItems(input);
    return 0;
}
