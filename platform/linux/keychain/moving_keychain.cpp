// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/moving_keychain.h"

#include <algorithm>

namespace zarn::linux_backend {

namespace {

KeychainQuery queryFor(const KeychainItem& item)
{
    return {item.accessGroup, item.service, item.account, true};
}

/// A secret of the keyring that is wiped when it has been compared.
struct WipedItem {
    StoredItem stored;
    ~WipedItem() { wipe(stored.item.secret); }
};

} // namespace

MovingKeychain::MovingKeychain(std::unique_ptr<SecretServiceKeychain> service,
    std::unique_ptr<FileKeychain> file, bool moves, CallContext& call)
    : m_service(std::move(service))
    , m_file(std::move(file))
    , m_moves(moves)
    , m_call(call)
{
}

KeychainStatus MovingKeychain::moveOne(const StoredItem& stored, bool& moved)
{
    const auto query = queryFor(stored.item);
    WipedItem found;
    auto status = m_service->find(query, found.stored);
    if (status == keychain_status::itemNotFound) {
        status = m_service->add(stored.item);
    } else if (status == keychain_status::success
        && found.stored.item.secret != stored.item.secret) {
        // Whichever was written last is the one that is right. The other one is not thrown away.
        if (found.stored.modified >= stored.modified) {
            m_call.report("the keyring holds newer items than the keychain file; the older ones "
                          "stay there");
            return keychain_status::success;
        }
        status = m_service->update(query, stored.item.secret);
    }
    if (status != keychain_status::success)
        return status;
    WipedItem copy;
    status = m_service->find(query, copy.stored);
    moved = status == keychain_status::success && copy.stored.item.secret == stored.item.secret;
    return status;
}

void MovingKeychain::moveAll()
{
    KeychainContents contents;
    if (!m_moves || !m_file->exists() || m_file->read(contents) != keychain_status::success)
        return;
    std::vector<StoredItem> done;
    for (const auto& stored : contents.items) {
        bool moved = false;
        if (moveOne(stored, moved) != keychain_status::success)
            break;
        if (moved)
            done.push_back(stored);
    }
    if (!done.empty() && m_file->remove(done) == keychain_status::success)
        m_call.report("items were moved from the keychain file to the keyring");
    for (auto& stored : done)
        wipe(stored.item.secret);
}

KeychainStatus MovingKeychain::add(const KeychainItem& item)
{
    moveAll();
    return m_service->add(item);
}

KeychainStatus MovingKeychain::update(const KeychainQuery& query, const Data& secret)
{
    moveAll();
    return m_service->update(query, secret);
}

KeychainMatch MovingKeychain::copyMatching(const KeychainQuery& query)
{
    moveAll();
    auto match = m_service->copyMatching(query);
    if (match.status == keychain_status::itemNotFound && m_file->exists())
        return m_file->copyMatching(query);
    return match;
}

KeychainStatus MovingKeychain::erase(const KeychainQuery& query)
{
    const auto status = m_service->erase(query);
    if (status == keychain_status::itemNotFound && m_file->exists())
        return m_file->erase(query);
    return status;
}

KeychainListing MovingKeychain::list()
{
    moveAll();
    auto listing = m_service->list();
    if (listing.status != keychain_status::success || !m_file->exists())
        return listing;
    for (auto& left : m_file->list().items) {
        const auto same = [&](const StoredItem& stored) {
            return stored.item.accessGroup == left.item.accessGroup
                && stored.item.service == left.item.service
                && stored.item.account == left.item.account;
        };
        if (std::none_of(listing.items.begin(), listing.items.end(), same))
            listing.items.push_back(std::move(left));
    }
    return listing;
}

} // namespace zarn::linux_backend
