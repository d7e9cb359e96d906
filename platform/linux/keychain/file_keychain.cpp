// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/file_keychain.h"

#include "platform/linux/files/durable_file.h"
#include "platform/linux/files/file_lock.h"

#include <algorithm>
#include <ctime>

#include <sys/stat.h>

namespace zarn::linux_backend {

namespace {

constexpr auto fileName = "/keychain";
constexpr auto keyFileName = "/keychain.key";

constexpr auto unreadable = "the keychain file cannot be read";
constexpr auto unwritable = "the keychain file cannot be written";

bool matches(const KeychainItem& item, const KeychainQuery& query)
{
    return item.accessGroup == query.accessGroup && item.service == query.service
        && (!query.account || item.account == *query.account);
}

auto firstMatch(std::vector<StoredItem>& items, const KeychainQuery& query)
{
    return std::find_if(items.begin(), items.end(),
        [&](const StoredItem& stored) { return matches(stored.item, query); });
}

std::uint64_t now()
{
    return static_cast<std::uint64_t>(std::max<std::time_t>(std::time(nullptr), 0));
}

} // namespace

FileKeychain::FileKeychain(std::string dataFolder, std::string stateFolder, CallContext& call)
    : m_path(dataFolder.empty() ? "" : std::move(dataFolder) + fileName)
    , m_keyPath(stateFolder.empty() ? "" : std::move(stateFolder) + keyFileName)
    , m_call(call)
{
}

KeychainStatus FileKeychain::failed(const Error& error, const char* what) const
{
    m_call.report(what, error.message);
    // Another program holds the lock: it is there, only slow.
    return error.code == ErrorCode::Unavailable ? keychain_status::interactionNotAllowed
                                                : keychain_status::ioFailure;
}

KeychainStatus FileKeychain::load(KeychainContents& contents, bool& damaged) const
{
    if (m_path.empty() || m_keyPath.empty())
        return keychain_status::notAvailable;
    const auto file = readPrivateFile(m_path, keychainFileLimit);
    if (!file && file.error().code == ErrorCode::NotFound)
        return keychain_status::success;
    if (!file)
        return failed(file.error(), unreadable);
    auto key = readPrivateFile(m_keyPath, 2 * keychainKeySize);
    if (!key && key.error().code != ErrorCode::NotFound && key.error().code != ErrorCode::TooLarge)
        return failed(key.error(), unreadable);
    const Wiped<std::string> secretKey(key ? std::move(key.value()) : std::string());
    auto opened = openKeychainFile(file.value(), secretKey.get());
    switch (opened.state) {
    case KeychainFileState::Opened:
        contents = std::move(opened.contents);
        return keychain_status::success;
    case KeychainFileState::Damaged:
        damaged = true;
        return keychain_status::success;
    case KeychainFileState::UnknownVersion:
        m_call.report(
            "the keychain file was written by a newer program; it is left untouched", m_path);
        return keychain_status::invalidKeychain;
    case KeychainFileState::Refused:
        break;
    }
    // Another process may have moved the items to a keyring service between the two reads.
    if (!key && !exists())
        return keychain_status::success;
    if (key)
        m_call.report("the keychain file was changed by someone else or belongs to another key; it "
                      "is left untouched",
            m_path);
    else
        m_call.report(
            "the key of the keychain file is missing; the file is left untouched", m_keyPath);
    return keychain_status::invalidKeychain;
}

KeychainStatus FileKeychain::loadUnderLock(KeychainContents& contents) const
{
    bool damaged = false;
    const auto status = load(contents, damaged);
    if (!damaged)
        return status;
    const auto kept = setDamagedFileAside(m_path);
    m_call.report("the keychain file is damaged and reads as empty",
        kept ? m_path + " is kept as " + kept.value() : kept.error().message);
    return kept ? keychain_status::success : keychain_status::ioFailure;
}

KeychainStatus FileKeychain::keyForWriting(std::string& key)
{
    if (const auto made = makeOwnFolder(m_keyPath.substr(0, m_keyPath.rfind('/'))); !made)
        return failed(made.error(), unwritable);
    auto stored = readPrivateFile(m_keyPath, 2 * keychainKeySize);
    if (stored && stored.value().size() == keychainKeySize) {
        key = std::move(stored.value());
        return keychain_status::success;
    }
    const bool isMissing = !stored && stored.error().code == ErrorCode::NotFound;
    if (!isMissing && !stored && stored.error().code != ErrorCode::TooLarge)
        return failed(stored.error(), unreadable);
    // Nothing is encrypted with this key (there is no keychain), yet it is kept: the keychain that
    // it belongs to may come back from a backup.
    if (!isMissing) {
        if (const auto kept = setDamagedFileAside(m_keyPath); !kept)
            return failed(kept.error(), unwritable);
    }
    key = newKeychainKey();
    if (key.empty())
        return keychain_status::ioFailure;
    const auto written = replacePrivateFile(m_keyPath, key);
    return written ? keychain_status::success : failed(written.error(), unwritable);
}

KeychainStatus FileKeychain::write(const KeychainContents& contents)
{
    Wiped<std::string> key;
    if (const auto status = keyForWriting(key.get()); status != keychain_status::success)
        return status;
    const auto bytes = sealKeychainFile(contents, key.get());
    if (bytes.empty())
        return failed({ErrorCode::TooLarge, "too large"}, unwritable);
    const auto written = replacePrivateFile(m_path, bytes);
    return written ? keychain_status::success : failed(written.error(), unwritable);
}

KeychainStatus FileKeychain::change(const Edit& edit)
{
    if (m_path.empty() || m_keyPath.empty())
        return keychain_status::notAvailable;
    const auto lock = FileLock::acquire(m_path, m_call.timeLeft());
    if (!lock)
        return failed(lock.error(), unwritable);
    KeychainContents contents;
    if (const auto status = loadUnderLock(contents); status != keychain_status::success)
        return status;
    if (const auto status = edit(contents.items); status != keychain_status::success)
        return status;
    ++contents.generation;
    return write(contents);
}

KeychainStatus FileKeychain::add(const KeychainItem& item)
{
    return change([&](std::vector<StoredItem>& items) {
        const KeychainQuery same{item.accessGroup, item.service, item.account, true};
        if (firstMatch(items, same) != items.end())
            return keychain_status::duplicateItem;
        items.push_back({item, now(), now()});
        return keychain_status::success;
    });
}

KeychainStatus FileKeychain::update(const KeychainQuery& query, const Data& secret)
{
    return change([&](std::vector<StoredItem>& items) {
        const auto match = firstMatch(items, query);
        if (match == items.end())
            return keychain_status::itemNotFound;
        wipe(match->item.secret);
        match->item.secret = secret;
        match->modified = now();
        return keychain_status::success;
    });
}

KeychainStatus FileKeychain::read(KeychainContents& contents) const
{
    bool damaged = false;
    const auto status = load(contents, damaged);
    if (!damaged)
        return status;
    // Another process may have replaced the file meanwhile.
    const auto lock = FileLock::acquire(m_path, m_call.timeLeft());
    return lock ? loadUnderLock(contents) : failed(lock.error(), unreadable);
}

KeychainMatch FileKeychain::copyMatching(const KeychainQuery& query)
{
    // A reader needs no lock: the file is replaced as a whole.
    KeychainContents contents;
    if (const auto status = read(contents); status != keychain_status::success)
        return {status, std::nullopt};
    const auto match = firstMatch(contents.items, query);
    if (match == contents.items.end())
        return {keychain_status::itemNotFound, std::nullopt};
    return {keychain_status::success, match->item};
}

KeychainListing FileKeychain::list()
{
    KeychainContents contents;
    KeychainListing listing{read(contents), {}};
    listing.items = std::move(contents.items);
    for (auto& stored : listing.items)
        wipe(stored.item.secret);
    return listing;
}

bool FileKeychain::exists() const
{
    struct stat status { };
    return !m_path.empty() && ::lstat(m_path.c_str(), &status) == 0;
}

KeychainStatus FileKeychain::erase(const KeychainQuery& query)
{
    auto match = copyMatching(query);
    if (!match.item)
        return match.status;
    std::vector<StoredItem> items(1);
    items[0].item = std::move(*match.item);
    const auto status = remove(items);
    wipe(items[0].item.secret);
    return status;
}

KeychainStatus FileKeychain::remove(const std::vector<StoredItem>& items)
{
    const auto lock = FileLock::acquire(m_path, m_call.timeLeft());
    if (!lock)
        return failed(lock.error(), unwritable);
    KeychainContents contents;
    bool damaged = false;
    if (const auto status = load(contents, damaged); status != keychain_status::success || damaged)
        return status;
    for (const auto& [item, created, modified] : items) {
        const auto match
            = firstMatch(contents.items, {item.accessGroup, item.service, item.account, true});
        if (match != contents.items.end() && match->item.secret == item.secret) {
            wipe(match->item.secret);
            contents.items.erase(match);
        }
    }
    if (!contents.items.empty()) {
        ++contents.generation;
        return write(contents);
    }
    // The key goes last: a keychain without its key would be lost, a key alone harms nothing.
    for (const auto& path : {m_path + ".tmp", m_path, m_keyPath + ".tmp", m_keyPath}) {
        if (const auto removed = removePrivateFile(path); !removed)
            return failed(removed.error(), unwritable);
    }
    return keychain_status::success;
}

} // namespace zarn::linux_backend
