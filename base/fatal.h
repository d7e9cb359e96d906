// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace zarn {

/// Stops the process: one line on standard error that says what is missing, then abort.
/// Only for program errors and missing required data. Any thread. `what` never holds a secret.
[[noreturn]] void fatalError(std::string_view what);

} // namespace zarn
