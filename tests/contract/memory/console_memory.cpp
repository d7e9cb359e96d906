// SPDX-License-Identifier: MIT
#include "platform/memory/memory_desktop.h"
#include "tests/contract/console_contract.h"

namespace zarn {
namespace {

class MemoryFixture final : public ConsoleFixture {
public:
    Console& console() override { return m_console; }
    std::string written() override
    {
        std::string text;
        for (const auto& line : m_console.lines)
            text += line + "\n";
        return text;
    }

private:
    memory::MemoryConsole m_console;
};

INSTANTIATE_TEST_SUITE_P(Memory, ConsoleContract,
    testing::Values(ConsoleBackend{"memory", [] { return std::make_unique<MemoryFixture>(); }}));

} // namespace
} // namespace zarn
