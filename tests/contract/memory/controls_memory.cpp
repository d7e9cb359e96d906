// SPDX-License-Identifier: MIT
#include "tests/contract/controls_contract.h"
#include "tests/contract/memory/memory_screen.h"

namespace zarn {
namespace {

std::string nameOf(const testing::TestParamInfo<ScreenBackend>& backend)
{
    return backend.param.name;
}

INSTANTIATE_TEST_SUITE_P(Memory, ControlsContract, testing::Values(memoryScreen()), nameOf);
INSTANTIATE_TEST_SUITE_P(Memory, TextFieldContract, testing::Values(memoryScreen()), nameOf);
INSTANTIATE_TEST_SUITE_P(Memory, PopUpButtonContract, testing::Values(memoryScreen()), nameOf);

} // namespace
} // namespace zarn
