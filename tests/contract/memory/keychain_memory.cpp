// SPDX-License-Identifier: MIT
#include "platform/memory/memory_keychain.h"
#include "tests/contract/keychain_contract.h"

namespace zarn {
namespace {

class MemoryFixture final : public KeychainFixture {
public:
    Keychain& keychain() override { return m_keychain; }
    Keychain& reopened() override { return m_keychain; }

private:
    std::vector<std::string> m_events;
    memory::MemoryKeychain m_keychain{m_events};
};

INSTANTIATE_TEST_SUITE_P(Memory, KeychainContract,
    testing::Values(KeychainBackend{"memory", [] { return std::make_unique<MemoryFixture>(); }}),
    backendName);

} // namespace
} // namespace zarn
