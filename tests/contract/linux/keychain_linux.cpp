// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/keychain_factory.h"
#include "platform/linux/keychain/keychain_thread.h"
#include "tests/contract/keychain_contract.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/test_main_queue.h"

namespace zarn::linux_backend {
namespace {

/// Every fixture has an access group of its own: items of the keyring service outlive a test.
class LinuxFixture final : public KeychainFixture {
public:
    explicit LinuxFixture(KeychainChoice choice)
        : m_choice(choice)
    {
        static int count = 0;
        m_group = "TEST.org.zarnie.contract" + std::to_string(++count);
        m_keychain = open();
    }

    Keychain& keychain() override { return *m_keychain; }
    Keychain& reopened() override
    {
        m_reopened = open();
        return *m_reopened;
    }
    // Texts end at a NUL on the way to the service.
    bool keepsNul() const override { return m_choice == KeychainChoice::File; }
    std::string accessGroup() const override { return m_group; }

private:
    std::unique_ptr<KeychainThread> open()
    {
        const auto openStore = [this](CallContext& call) {
            return makeKeychainStore(
                {m_choice, m_scratch.path() + "/data", m_scratch.path() + "/state", true}, call);
        };
        return std::make_unique<KeychainThread>(
            m_mainQueue, openStore, KeychainThread::Limits{}, [](const std::string&) {});
    }

    const KeychainChoice m_choice;
    std::string m_group;
    const ScratchFolder m_scratch;
    TestMainQueue m_mainQueue;
    std::unique_ptr<KeychainThread> m_keychain;
    std::unique_ptr<KeychainThread> m_reopened;
};

KeychainBackend backend(const std::string& name, KeychainChoice choice)
{
    return {name, [choice] { return std::make_unique<LinuxFixture>(choice); }};
}

} // namespace
} // namespace zarn::linux_backend

namespace zarn {

INSTANTIATE_TEST_SUITE_P(Linux, KeychainContract,
    testing::Values(linux_backend::backend("file", linux_backend::KeychainChoice::File),
        linux_backend::backend("secretService", linux_backend::KeychainChoice::SecretService)),
    backendName);

} // namespace zarn
