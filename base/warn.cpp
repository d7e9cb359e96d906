// SPDX-License-Identifier: MIT
#include "base/warn.h"

#include <cstdio>
#include <string>

namespace zarn {

void warn(std::string_view line)
{
    // In one call, so that lines of several threads do not mix.
    const auto text = "zarn-actions: " + std::string(line) + "\n";
    std::fwrite(text.data(), 1, text.size(), stderr);
}

} // namespace zarn
