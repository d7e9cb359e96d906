// SPDX-License-Identifier: MIT
#include "tests/contract/memory/memory_screen.h"
#include "tests/contract/storyboard_contract.h"

namespace zarn {
namespace {

INSTANTIATE_TEST_SUITE_P(Memory, StoryboardContract, testing::Values(memoryScreen()),
    [](const auto& backend) { return backend.param.name; });

} // namespace
} // namespace zarn
