// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/desktop_workspace.h"
#include "tests/contract/workspace_contract.h"
#include "tests/support/fake_file_manager.h"
#include "tests/support/fake_opener.h"

namespace zarn {
namespace {

using namespace linux_backend;

const auto* const environment = testing::AddGlobalTestEnvironment(new QtEnvironment);

class DesktopWorkspaceFixture final : public WorkspaceFixture {
public:
    Workspace& workspace() override { return m_workspace; }
    std::vector<std::string> opened(std::size_t count) override
    {
        runEventsUntil(
            [&] { return m_opener.calls().size() + m_fileManager.folders.size() >= count; });
        std::vector<std::string> result;
        for (const auto& call : m_opener.calls())
            result.push_back("url " + call.substr(2));
        for (const auto& folder : m_fileManager.folders)
            result.push_back("folder " + folder);
        return result;
    }

private:
    FakeOpener m_opener;
    FakeFileManager m_fileManager;
    DesktopWorkspace m_workspace;
};

INSTANTIATE_TEST_SUITE_P(Desktop, WorkspaceContract,
    testing::Values(
        WorkspaceBackend{"desktop", [] { return std::make_unique<DesktopWorkspaceFixture>(); }}),
    [](const auto& backend) { return backend.param.name; });

} // namespace
} // namespace zarn
