// SPDX-License-Identifier: MIT
#pragma once

#include "api/status_display.h"

#include <map>
#include <string>

namespace zarn {

class Console;
class Label;

/// The status line of the configuration view: empty most of the time. A progress hides the cause of
/// a failure, waiting for the keyring hides waiting for a server. Exists once per process; while no
/// view shows it, it only prints. Main thread only.
class StatusLine final : public StatusDisplay {
public:
    explicit StatusLine(Console& console)
        : m_console(console)
    {
    }

    /// The label of the view, or nullptr when the view goes away.
    void setLabel(Label* label);
    /// The user did something: what failed before is no longer news.
    void userActed();

    void showProgress(Wait wait, std::string_view text) override;
    void endProgress(Wait wait) override;
    void showFailure(std::string_view operation, std::string_view cause) override;

private:
    void update();

    Console& m_console;
    Label* m_label = nullptr;
    std::map<Wait, std::string> m_progress;
    std::string m_failure;
    std::string m_shown;
};

/// The text as one line that cannot mislead its reader: control characters, line breaks and what
/// changes the direction of text become U+FFFD, as bytes that are not UTF-8 do; a long text ends
/// in "…".
std::string plainLine(std::string_view text);

} // namespace zarn
