// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/keychain_factory.h"

#include "platform/linux/keychain/moving_keychain.h"

namespace zarn::linux_backend {

namespace {

constexpr std::chrono::seconds choiceLimit{5};

/// A store together with the reports that it borrows.
class ChosenKeychain final : public KeychainStore {
public:
    explicit ChosenKeychain(const KeychainOptions& options)
        : m_reports(options.report)
        , m_store(choose(options))
    {
    }

    KeychainStatus add(const KeychainItem& item, Deadline deadline) override
    {
        return m_store->add(item, deadline);
    }
    KeychainStatus update(
        const KeychainQuery& query, const Data& secret, Deadline deadline) override
    {
        return m_store->update(query, secret, deadline);
    }
    KeychainMatch copyMatching(const KeychainQuery& query, Deadline deadline) override
    {
        return m_store->copyMatching(query, deadline);
    }
    KeychainStatus erase(const KeychainQuery& query, Deadline deadline) override
    {
        return m_store->erase(query, deadline);
    }
    KeychainListing list(Deadline deadline) override { return m_store->list(deadline); }

private:
    std::unique_ptr<KeychainStore> choose(const KeychainOptions& options)
    {
        auto file
            = std::make_unique<FileKeychain>(options.dataFolder, options.stateFolder, m_reports);
        if (options.choice == KeychainChoice::File
            || (options.choice == KeychainChoice::Automatic && serviceIsProvablyAbsent())) {
            m_reports.tell(KeychainState::FileChosen);
            return file;
        }
        return std::make_unique<MovingKeychain>(std::make_unique<SecretServiceKeychain>(m_reports),
            std::move(file), options.moveItems, m_reports);
    }

    /// No bus, or a bus that knows no such service. A service that is locked, slow or refuses is
    /// there, and so may be one behind a bus that cannot be reached.
    static bool serviceIsProvablyAbsent()
    {
        SecretConnection connection;
        return connection.find(std::chrono::steady_clock::now() + choiceLimit)
            == CallOutcome::Absent;
    }

    KeychainReports m_reports;
    std::unique_ptr<KeychainStore> m_store;
};

} // namespace

std::unique_ptr<KeychainStore> makeKeychainStore(const KeychainOptions& options)
{
    return std::make_unique<ChosenKeychain>(options);
}

} // namespace zarn::linux_backend
