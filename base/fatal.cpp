// SPDX-License-Identifier: MIT
#include "base/fatal.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace zarn {

void fatalError(std::string_view what)
{
    const std::string line = "zarn-actions: fatal: " + std::string(what) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
    std::abort();
}

} // namespace zarn
