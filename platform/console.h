// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace zarn {

/// The program's standard output, for the few diagnostic lines that do not belong in the log.
/// Any thread. Never receives a secret.
class Console {
public:
    virtual ~Console() = default;
    /// Writes the line and a line break; a failure is ignored.
    virtual void writeLine(std::string_view line) = 0;
};

} // namespace zarn
