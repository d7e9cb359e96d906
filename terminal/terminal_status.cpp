// SPDX-License-Identifier: MIT
#include "terminal/terminal_status.h"

#include "profiles/status_line.h"

namespace zarn {

void TerminalStatus::showProgress(Wait, std::string_view text)
{
    if (m_terminal.isErrorTerminal())
        m_terminal.writeErrorLine(plainLine(text));
}

ExitCode TerminalStatus::fail(ExitCode code, std::string_view text)
{
    m_terminal.writeErrorLine("zarn-profile: " + plainLine(text));
    return code;
}

ExitCode TerminalStatus::failNotFound(const std::string& name)
{
    return fail(ExitCode::NotFound,
        name.empty() ? "no server is current; choose one with 'zarn-profile use'"
                     : "no server \"" + name + "\" is registered; see 'zarn-profile list'");
}

ExitCode TerminalStatus::print(std::string_view text)
{
    return m_terminal.write(text) ? ExitCode::Done
                                  : fail(ExitCode::NotWritten, "standard output cannot be written");
}

std::string TerminalAlerts::display(
    std::string_view, std::string_view message, std::string_view secondButtonTitle)
{
    m_lastMessage = message;
    if (m_assumesYes || secondButtonTitle != "Cancel")
        return "OK";
    const auto answer = m_terminal.readLine(plainLine(message) + " [y/N] ", Echo::On);
    return answer == "y" || answer == "Y" || answer == "yes" ? "OK" : "Cancel";
}

} // namespace zarn
