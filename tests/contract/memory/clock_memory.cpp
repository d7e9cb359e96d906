// SPDX-License-Identifier: MIT
#include "platform/memory/memory_clock.h"
#include "tests/contract/clock_contract.h"

namespace zarn {

INSTANTIATE_TEST_SUITE_P(Memory, ClockContract,
    testing::Values(
        ClockBackend{"memory", [] { return std::make_unique<memory::MemoryClock>(); }}));

} // namespace zarn
