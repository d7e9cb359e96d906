// SPDX-License-Identifier: MIT
#pragma once

#include "api/alert_display.h"
#include "api/status_display.h"
#include "platform/console.h"
#include "platform/terminal.h"
#include "terminal/exit_code.h"

#include <string>

namespace zarn {

/// What a command says on standard error while it runs and why it failed. Main thread only.
class TerminalStatus final : public StatusDisplay {
public:
    explicit TerminalStatus(Terminal& terminal)
        : m_terminal(terminal)
    {
    }

    /// Only on a terminal; elsewhere it would be mistaken for an error.
    void showProgress(Wait, std::string_view text) override;
    void endProgress(Wait) override { }
    void showFailure(std::string_view, std::string_view cause) override { m_failure = cause; }

    /// The cause of the last failure; empty when nothing failed.
    const std::string& failure() const { return m_failure; }
    void forgetFailure() { m_failure.clear(); }
    /// One line on standard error; returns the code.
    ExitCode fail(ExitCode code, std::string_view text);
    /// There is no server of that name or, for an empty one, no current server.
    ExitCode failNotFound(const std::string& name);
    /// To standard output; fails when it cannot be written.
    ExitCode print(std::string_view text);

private:
    Terminal& m_terminal;
    std::string m_failure;
};

/// Answers the alerts of the configuration view: a question is asked on the terminal, everything
/// else is kept as what the view has to say. Main thread only.
class TerminalAlerts final : public AlertDisplay {
public:
    explicit TerminalAlerts(Terminal& terminal)
        : m_terminal(terminal)
    {
    }

    std::string display(std::string_view header, std::string_view message,
        std::string_view secondButtonTitle) override;
    /// From now on every question is answered with "OK".
    void assumeYes() { m_assumesYes = true; }
    const std::string& lastMessage() const { return m_lastMessage; }

private:
    Terminal& m_terminal;
    bool m_assumesYes = false;
    std::string m_lastMessage;
};

/// The diagnostic lines of the window have no place among a command's output.
class SilentConsole final : public Console {
public:
    void writeLine(std::string_view) override { }
};

} // namespace zarn
