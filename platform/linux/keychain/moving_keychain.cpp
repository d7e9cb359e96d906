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
    std::unique_ptr<FileKeychain> file, bool moves, KeychainReports& reports)
    : m_service(std::move(service))
    , m_file(std::move(file))
    , m_moves(moves)
    , m_reports(reports)
{
}

KeychainStatus MovingKeychain::moveOne(const StoredItem& stored, bool& moved, Deadline deadline)
{
    const auto query = queryFor(stored.item);
    WipedItem found;
    auto status = m_service->find(query, found.stored, deadline);
    if (status == keychain_status::itemNotFound) {
        status = m_service->add(stored.item, deadline);
    } else if (status == keychain_status::success
        && found.stored.item.secret != stored.item.secret) {
        // Whichever was written last is the one that is right. The other one is not thrown away.
        if (found.stored.modified >= stored.modified) {
            m_reports.tell(KeychainState::MoveConflict);
            return keychain_status::success;
        }
        status = m_service->update(query, stored.item.secret, deadline);
    }
    if (status != keychain_status::success)
        return status;
    WipedItem copy;
    status = m_service->find(query, copy.stored, deadline);
    moved = status == keychain_status::success && copy.stored.item.secret == stored.item.secret;
    return status;
}

void MovingKeychain::moveAll(Deadline deadline)
{
    KeychainContents contents;
    if (!m_moves || !m_file->exists() || m_file->read(contents) != keychain_status::success)
        return;
    std::vector<StoredItem> done;
    for (const auto& stored : contents.items) {
        bool moved = false;
        if (moveOne(stored, moved, deadline) != keychain_status::success)
            break;
        if (moved)
            done.push_back(stored);
    }
    if (!done.empty() && m_file->remove(done, deadline) == keychain_status::success)
        m_reports.tell(KeychainState::Moved);
    for (auto& stored : done)
        wipe(stored.item.secret);
}

KeychainStatus MovingKeychain::add(const KeychainItem& item, Deadline deadline)
{
    moveAll(deadline);
    return m_service->add(item, deadline);
}

KeychainStatus MovingKeychain::update(
    const KeychainQuery& query, const Data& secret, Deadline deadline)
{
    moveAll(deadline);
    return m_service->update(query, secret, deadline);
}

KeychainMatch MovingKeychain::copyMatching(const KeychainQuery& query, Deadline deadline)
{
    moveAll(deadline);
    auto match = m_service->copyMatching(query, deadline);
    if (match.status == keychain_status::itemNotFound && m_file->exists())
        return m_file->copyMatching(query, deadline);
    return match;
}

KeychainStatus MovingKeychain::erase(const KeychainQuery& query, Deadline deadline)
{
    const auto status = m_service->erase(query, deadline);
    if (status == keychain_status::itemNotFound && m_file->exists())
        return m_file->erase(query, deadline);
    return status;
}

KeychainListing MovingKeychain::list(Deadline deadline)
{
    moveAll(deadline);
    auto listing = m_service->list(deadline);
    if (listing.status != keychain_status::success || !m_file->exists())
        return listing;
    for (auto& left : m_file->list(deadline).items) {
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
