// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace zarn {

/// Prints one line on standard error, in the program's name. Any thread; never with a secret.
void warn(std::string_view line);

} // namespace zarn
