// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"

#include <optional>
#include <string>
#include <string_view>

namespace zarn {

enum class Echo { On, Off };

/// The standard streams of a program without a window. Main thread only.
class Terminal {
public:
    virtual ~Terminal() = default;

    virtual bool isInputTerminal() const = 0;
    virtual bool isOutputTerminal() const = 0;
    virtual bool isErrorTerminal() const = 0;

    /// One line of standard input without its line break; nothing at its end, or when the user
    /// interrupts. On a terminal `prompt` is shown first, and without echo what is typed is not;
    /// the terminal is then as it was before, however this call ends.
    virtual std::optional<std::string> readLine(std::string_view prompt, Echo echo) = 0;
    /// All of a file, or of standard input for "-"; at most 16 MiB. The error is for people.
    virtual Result<std::string> readAll(const std::string& path) = 0;
    /// Writes to standard output, unbuffered; false when not all of it got out.
    [[nodiscard]] virtual bool write(std::string_view text) = 0;
    /// Writes a line and a line break to standard error; a failure is ignored.
    virtual void writeErrorLine(std::string_view line) = 0;
};

} // namespace zarn
