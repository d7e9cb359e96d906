// SPDX-License-Identifier: MIT
#include "base/fatal.h"

#include "base/warn.h"

#include <cstdlib>
#include <string>

namespace zarn {

void fatalError(std::string_view what)
{
    warn("fatal: " + std::string(what));
    std::abort();
}

} // namespace zarn
