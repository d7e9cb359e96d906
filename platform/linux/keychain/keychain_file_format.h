// SPDX-License-Identifier: MIT
#pragma once

#include "base/wipe.h"
#include "platform/linux/keychain/keychain_store.h"

#include <array>

/// The bytes of the file keychain. Integers are little-endian.
///
///     offset  size  header (authenticated, not encrypted)
///          0     8  magic "ZARNKCF\0"
///          8     4  version, 1
///         12     4  reserved, 0
///         16     8  generation: grows by one with every write
///         24    24  nonce, random for every write
///         48     -  XChaCha20-Poly1305 of the items, then its 16-byte tag
///
/// The items are a 32-bit count, then for each: created and modified (64 bits each), then access
/// group, service, account and secret, each as a 32-bit length and that many bytes.
/// Pure functions, any thread; no file is touched.
namespace zarn::linux_backend {

inline constexpr std::size_t keychainKeySize = 32;
inline constexpr std::size_t keychainHeaderSize = 48;
inline constexpr std::size_t keychainFileLimit = std::size_t{16} << 20;

struct KeychainContents {
    std::uint64_t generation = 0;
    std::vector<StoredItem> items;

    KeychainContents() = default;
    ~KeychainContents();
    KeychainContents(KeychainContents&&) = default;
    KeychainContents& operator=(KeychainContents&&) = default;
    KeychainContents(const KeychainContents&) = delete;
    KeychainContents& operator=(const KeychainContents&) = delete;
};

enum class KeychainFileState {
    Opened,
    /// Not a keychain file: another magic, or shorter than a header.
    Damaged,
    /// Written by a newer program.
    UnknownVersion,
    /// Written with another key, or changed since.
    Refused,
};

struct OpenedKeychain {
    KeychainFileState state = KeychainFileState::Damaged;
    KeychainContents contents;
};

/// `key` has keychainKeySize bytes.
OpenedKeychain openKeychainFile(std::string_view bytes, std::string_view key);

/// Empty when the system gives no random numbers or the contents are too large.
std::string sealKeychainFile(const KeychainContents& contents, std::string_view key);

/// Write and read the encrypted part. Writing returns an empty result for contents that are too
/// large; reading returns false unless the bytes are exactly the items.
Wiped<std::string> plainKeychainItems(const std::vector<StoredItem>& items);
bool parseKeychainItems(std::string_view plain, std::vector<StoredItem>& items);

/// A random key; empty when the system gives no random numbers.
std::string newKeychainKey();

} // namespace zarn::linux_backend
