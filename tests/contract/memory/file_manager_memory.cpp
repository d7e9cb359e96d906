// SPDX-License-Identifier: MIT
#include "platform/memory/memory_file_manager.h"
#include "tests/contract/file_manager_contract.h"

namespace zarn {
namespace {

class MemoryFixture final : public FileManagerFixture {
public:
    FileManager& fileManager() override { return m_files; }
    std::string contentsOf(const std::string& path) override { return m_files.files.at(path); }

private:
    std::vector<std::string> m_events;
    memory::MemoryFileManager m_files{m_events};
};

INSTANTIATE_TEST_SUITE_P(Memory, FileManagerContract,
    testing::Values(
        FileManagerBackend{"memory", [] { return std::make_unique<MemoryFixture>(); }}));

} // namespace
} // namespace zarn
