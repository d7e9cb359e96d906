// SPDX-License-Identifier: MIT
#include "platform/memory/memory_desktop.h"
#include "tests/contract/window_list_contract.h"

#include <algorithm>

namespace zarn {
namespace {

class MemoryWindowListFixture final : public WindowListFixture {
public:
    WindowList& windowList() override { return m_list; }
    void open(const std::string& owner, const std::string& title) override
    {
        m_list.records->insert(m_list.records->begin(), WindowRecord{owner, title});
    }
    void close(const std::string& title) override
    {
        std::erase_if(*m_list.records,
            [&](const WindowRecord& record) { return record.windowName == title; });
    }

private:
    memory::MemoryWindowList m_list;
};

INSTANTIATE_TEST_SUITE_P(Memory, WindowListContract,
    testing::Values(
        WindowListBackend{"memory", [] { return std::make_unique<MemoryWindowListFixture>(); }}),
    [](const auto& backend) { return backend.param.name; });

} // namespace
} // namespace zarn
