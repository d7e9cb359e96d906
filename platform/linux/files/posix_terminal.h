// SPDX-License-Identifier: MIT
#pragma once

#include "platform/terminal.h"

#include <functional>
#include <string>

namespace zarn::linux_backend {

/// The standard streams of the process.
class PosixTerminal final : public Terminal {
public:
    /// Waits until the descriptor has input or is at its end; false when the user interrupts.
    using WaitForInput = std::function<bool(int descriptor)>;
    explicit PosixTerminal(WaitForInput waitForInput)
        : m_waitForInput(std::move(waitForInput))
    {
    }

    bool isInputTerminal() const override;
    bool isOutputTerminal() const override;
    bool isErrorTerminal() const override;
    std::optional<std::string> readLine(std::string_view prompt, Echo echo) override;
    Result<std::string> readAll(const std::string& path) override;
    bool write(std::string_view text) override;
    void writeErrorLine(std::string_view line) override;

private:
    std::optional<std::string> readLine() const;

    WaitForInput m_waitForInput;
};

} // namespace zarn::linux_backend
