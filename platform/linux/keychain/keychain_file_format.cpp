// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/keychain_file_format.h"

#include <sodium.h>

namespace zarn::linux_backend {

namespace {

using namespace std::string_view_literals;

constexpr auto magic = "ZARNKCF\0"sv;
constexpr std::uint32_t knownVersion = 1;
constexpr std::size_t versionOffset = 8;
constexpr std::size_t generationOffset = 16;
constexpr std::size_t nonceOffset = 24;
constexpr std::size_t tagSize = crypto_aead_xchacha20poly1305_ietf_ABYTES;
static_assert(keychainKeySize == crypto_aead_xchacha20poly1305_ietf_KEYBYTES);
static_assert(keychainHeaderSize == nonceOffset + crypto_aead_xchacha20poly1305_ietf_NPUBBYTES);

const unsigned char* bytesOf(std::string_view text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* bytesOf(std::string& text)
{
    return reinterpret_cast<unsigned char*>(text.data());
}

template <typename Integer> Integer readInteger(std::string_view bytes, std::size_t offset)
{
    Integer value = 0;
    for (std::size_t i = sizeof value; i-- > 0;)
        value = static_cast<Integer>(value << 8U) | static_cast<unsigned char>(bytes[offset + i]);
    return value;
}

template <typename Integer> void appendInteger(std::string& bytes, Integer value)
{
    for (std::size_t i = 0; i < sizeof value; ++i) {
        bytes += static_cast<char>(value & 0xFFU);
        value = static_cast<Integer>(value >> 8U);
    }
}

template <typename Bytes> void appendBytes(std::string& bytes, const Bytes& field)
{
    appendInteger(bytes, static_cast<std::uint32_t>(field.size()));
    // By address: from iterators of other bytes the library would make a text of its own first, and
    // leave that behind.
    bytes.append(reinterpret_cast<const char*>(field.data()), field.size());
}

/// Reads fields one after the other; once one does not fit, nothing fits any more.
class Reader {
public:
    explicit Reader(std::string_view bytes)
        : m_bytes(bytes)
    {
    }

    template <typename Integer> Integer integer()
    {
        if (m_bytes.size() < sizeof(Integer)) {
            m_failed = true;
            return 0;
        }
        const auto value = readInteger<Integer>(m_bytes, 0);
        m_bytes.remove_prefix(sizeof value);
        return value;
    }

    template <typename Bytes> Bytes field()
    {
        const auto size = integer<std::uint32_t>();
        // The one thing that is returned: a copy would leave a secret in freed memory.
        Bytes value;
        m_failed = m_failed || m_bytes.size() < size;
        if (!m_failed) {
            value.assign(m_bytes.begin(), m_bytes.begin() + size);
            m_bytes.remove_prefix(size);
        }
        return value;
    }

    bool failed() const { return m_failed; }
    bool atEnd() const { return m_bytes.empty(); }

private:
    std::string_view m_bytes;
    bool m_failed = false;
};

bool isReady()
{
    static const bool ready = sodium_init() >= 0;
    return ready;
}

} // namespace

bool parseKeychainItems(std::string_view plain, std::vector<StoredItem>& items)
{
    Reader reader(plain);
    const auto count = reader.integer<std::uint32_t>();
    for (std::uint32_t i = 0; i < count && !reader.failed(); ++i) {
        StoredItem stored;
        stored.created = reader.integer<std::uint64_t>();
        stored.modified = reader.integer<std::uint64_t>();
        stored.item.accessGroup = reader.field<std::string>();
        stored.item.service = reader.field<std::string>();
        stored.item.account = reader.field<std::string>();
        stored.item.secret = reader.field<Data>();
        items.push_back(std::move(stored));
    }
    return !reader.failed() && reader.atEnd();
}

/// Exactly as large as it has to be: growing would leave copies of secrets in freed memory.
Wiped<std::string> plainKeychainItems(const std::vector<StoredItem>& items)
{
    std::size_t size = 4;
    for (const auto& [item, created, modified] : items)
        size += 32 + item.accessGroup.size() + item.service.size() + item.account.size()
            + item.secret.size();
    Wiped<std::string> plain;
    if (size > keychainFileLimit - keychainHeaderSize - tagSize)
        return plain;
    auto& bytes = plain.get();
    bytes.reserve(size);
    appendInteger(bytes, static_cast<std::uint32_t>(items.size()));
    for (const auto& [item, created, modified] : items) {
        appendInteger(bytes, created);
        appendInteger(bytes, modified);
        appendBytes(bytes, item.accessGroup);
        appendBytes(bytes, item.service);
        appendBytes(bytes, item.account);
        appendBytes(bytes, item.secret);
    }
    return plain;
}

KeychainContents::~KeychainContents()
{
    for (auto& stored : items)
        wipe(stored.item.secret);
}

OpenedKeychain openKeychainFile(std::string_view bytes, std::string_view key)
{
    OpenedKeychain opened;
    if (bytes.size() < keychainHeaderSize || !bytes.starts_with(magic))
        return opened;
    if (readInteger<std::uint32_t>(bytes, versionOffset) != knownVersion) {
        opened.state = KeychainFileState::UnknownVersion;
        return opened;
    }
    opened.state = KeychainFileState::Refused;
    if (!isReady() || key.size() != keychainKeySize || bytes.size() < keychainHeaderSize + tagSize)
        return opened;
    const auto header = bytes.substr(0, keychainHeaderSize);
    const auto sealed = bytes.substr(keychainHeaderSize);
    Wiped<std::string> plain(std::string(sealed.size() - tagSize, '\0'));
    if (crypto_aead_xchacha20poly1305_ietf_decrypt(bytesOf(plain.get()), nullptr, nullptr,
            bytesOf(sealed), sealed.size(), bytesOf(header), header.size(),
            bytesOf(header.substr(nonceOffset)), bytesOf(key))
            != 0
        || !parseKeychainItems(plain.get(), opened.contents.items))
        return opened;
    opened.contents.generation = readInteger<std::uint64_t>(bytes, generationOffset);
    opened.state = KeychainFileState::Opened;
    return opened;
}

std::string sealKeychainFile(const KeychainContents& contents, std::string_view key)
{
    const auto plain = plainKeychainItems(contents.items);
    if (!isReady() || key.size() != keychainKeySize || plain.get().empty())
        return {};
    std::string file(magic);
    appendInteger(file, knownVersion);
    appendInteger(file, std::uint32_t{0});
    appendInteger(file, contents.generation);
    file.resize(keychainHeaderSize + plain.get().size() + tagSize);
    auto* const bytes = bytesOf(file);
    randombytes_buf(bytes + nonceOffset, keychainHeaderSize - nonceOffset);
    crypto_aead_xchacha20poly1305_ietf_encrypt(bytes + keychainHeaderSize, nullptr,
        bytesOf(std::string_view(plain.get())), plain.get().size(), bytes, keychainHeaderSize,
        nullptr, bytes + nonceOffset, bytesOf(key));
    return file;
}

std::string newKeychainKey()
{
    if (!isReady())
        return {};
    std::string key(keychainKeySize, '\0');
    randombytes_buf(key.data(), key.size());
    return key;
}

} // namespace zarn::linux_backend
