// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace zarn {

enum class AlertStyle { Warning = 0, Informational = 1, Critical = 2 };

struct AlertButton {
    std::string title;
    /// "" for none, "\r" for Return, else one character that presses the button.
    std::string keyEquivalent;
};

struct Alert {
    std::string messageText;
    std::string informativeText;
    AlertStyle style = AlertStyle::Warning;
    /// In the order of their response codes.
    std::vector<AlertButton> buttons;
};

inline constexpr int alertFirstButtonReturn = 1000;
inline constexpr int alertSecondButtonReturn = 1001;

/// Runs alerts. Main thread only.
class AlertRunner {
public:
    virtual ~AlertRunner() = default;

    /// Blocks until a button is pressed and returns 1000 for the first, 1001 for the second. Esc,
    /// closing the window and the end of the program press the button titled "Cancel" or "Ignore",
    /// else the first, so that nothing is done that nobody asked for. The texts are plain, can be
    /// selected and copied. The Return key presses the first button unless another claims it.
    virtual int runModal(const Alert& alert) = 0;
};

} // namespace zarn
