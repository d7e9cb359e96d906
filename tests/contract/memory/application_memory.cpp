// SPDX-License-Identifier: MIT
#include "tests/contract/application_contract.h"
#include "tests/contract/memory/memory_screen.h"

namespace zarn {
namespace {

INSTANTIATE_TEST_SUITE_P(Memory, ApplicationContract, testing::Values(memoryScreen()),
    [](const auto& backend) { return backend.param.name; });

} // namespace
} // namespace zarn
