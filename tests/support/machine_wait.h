// SPDX-License-Identifier: MIT
#pragma once

#include <fstream>

namespace zarn {

/// How long this thread has stood ready while the machine ran others, in milliseconds.
inline double waitedForTheMachine()
{
    std::ifstream statistics("/proc/thread-self/schedstat");
    double ran = 0;
    double waited = 0;
    statistics >> ran >> waited;
    return waited / 1e6;
}

} // namespace zarn
