// SPDX-License-Identifier: MIT
// What the suites of a terminal ask of the in-memory backend.
#include "platform/memory/memory_terminal.h"
#include "tests/contract/run_loop_contract.h"
#include "tests/contract/terminal_contract.h"

#include <sstream>

namespace zarn {
namespace {

class MemoryRunLoopFixture final : public RunLoopFixture {
public:
    RunLoop& runLoop() override { return m_loop; }
    void interrupt() override { m_loop.interrupted = true; }

private:
    memory::MemoryRunLoop m_loop;
};

class MemoryTerminalFixture final : public TerminalFixture {
public:
    Terminal& terminal(const std::string& input) override
    {
        std::istringstream lines(input);
        for (std::string line; std::getline(lines, line);)
            m_terminal.input.push_back(line);
        m_terminal.files["-"] = input;
        return m_terminal;
    }
    std::string output() override { return m_terminal.output; }
    std::string errors() override
    {
        std::string text;
        for (const auto& line : m_terminal.errors)
            text += line + "\n";
        return text;
    }

private:
    memory::MemoryTerminal m_terminal;
};

} // namespace

std::unique_ptr<RunLoopFixture> makeRunLoopFixture()
{
    return std::make_unique<MemoryRunLoopFixture>();
}

std::unique_ptr<TerminalFixture> makeTerminalFixture()
{
    return std::make_unique<MemoryTerminalFixture>();
}

} // namespace zarn
