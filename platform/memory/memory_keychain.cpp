// SPDX-License-Identifier: MIT
#include "platform/memory/memory_keychain.h"

#include <algorithm>

namespace zarn::memory {

KeychainItem* MemoryKeychain::firstMatch(const KeychainQuery& query)
{
    const auto it = std::find_if(items.begin(), items.end(), [&](const KeychainItem& item) {
        return item.accessGroup == query.accessGroup && item.service == query.service
            && (!query.account || item.account == *query.account);
    });
    return it == items.end() ? nullptr : &*it;
}

KeychainStatus MemoryKeychain::add(const KeychainItem& item)
{
    const std::lock_guard lock(m_mutex);
    m_events.push_back("keychain add " + item.service + "/" + item.account);
    if (addStatus != keychain_status::success)
        return addStatus;
    if (firstMatch({item.accessGroup, item.service, item.account, true}))
        return keychain_status::duplicateItem;
    items.push_back(item);
    return keychain_status::success;
}

KeychainStatus MemoryKeychain::update(const KeychainQuery& query, const Data& secret)
{
    const std::lock_guard lock(m_mutex);
    queries.push_back(query);
    m_events.push_back("keychain update " + query.service + "/" + query.account.value_or("*"));
    if (updateStatus != keychain_status::success)
        return updateStatus;
    auto* item = firstMatch(query);
    if (!item)
        return keychain_status::itemNotFound;
    item->secret = secret;
    return keychain_status::success;
}

KeychainMatch MemoryKeychain::copyMatching(const KeychainQuery& query)
{
    const std::lock_guard lock(m_mutex);
    queries.push_back(query);
    m_events.push_back("keychain copy " + query.service + "/" + query.account.value_or("*"));
    if (copyStatus != keychain_status::success)
        return {copyStatus, std::nullopt};
    if (const auto* item = firstMatch(query))
        return {keychain_status::success, *item};
    return {keychain_status::itemNotFound, std::nullopt};
}

std::optional<std::string> MemoryKeychain::messageText(KeychainStatus status) const
{
    switch (status) {
    case keychain_status::success:
        return "No error";
    case keychain_status::userCanceled:
        return "The user refused";
    case keychain_status::notAvailable:
        return "There is no keychain";
    case keychain_status::duplicateItem:
        return "The item exists already";
    case keychain_status::itemNotFound:
        return "There is no such item";
    case keychain_status::ioFailure:
        return "The keychain cannot be read or written";
    case keychain_status::readOnly:
        return "The keychain cannot be changed";
    case keychain_status::invalidKeychain:
        return "The keychain does not open";
    case keychain_status::noDefaultKeychain:
        return "There is no default keychain";
    case keychain_status::interactionNotAllowed:
        return "The keychain is locked";
    default:
        return std::nullopt;
    }
}

} // namespace zarn::memory
