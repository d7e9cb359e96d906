// SPDX-License-Identifier: MIT
#include "platform/memory/memory_desktop.h"
#include "tests/contract/workspace_contract.h"

namespace zarn {
namespace {

class MemoryWorkspaceFixture final : public WorkspaceFixture {
public:
    Workspace& workspace() override { return m_workspace; }
    std::vector<std::string> opened(std::size_t) override
    {
        std::vector<std::string> result;
        for (const auto& url : m_workspace.openedUrls)
            result.push_back("url " + url);
        for (const auto& folder : m_workspace.openedFolders)
            result.push_back("folder " + folder);
        return result;
    }

private:
    memory::MemoryWorkspace m_workspace;
};

INSTANTIATE_TEST_SUITE_P(Memory, WorkspaceContract,
    testing::Values(
        WorkspaceBackend{"memory", [] { return std::make_unique<MemoryWorkspaceFixture>(); }}),
    [](const auto& backend) { return backend.param.name; });

} // namespace
} // namespace zarn
