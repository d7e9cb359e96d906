// SPDX-License-Identifier: MIT
#include "tests/contract/controls_contract.h"
#include "tests/contract/linux/qt_screen.h"
#include "tests/support/window_manager_environment.h"

namespace zarn {
namespace {

using namespace linux_backend;

const auto* const environment = testing::AddGlobalTestEnvironment(new WindowManagerEnvironment);

std::string nameOf(const testing::TestParamInfo<ScreenBackend>& backend)
{
    return backend.param.name;
}

INSTANTIATE_TEST_SUITE_P(Qt, ControlsContract, testing::Values(qtScreen()), nameOf);
INSTANTIATE_TEST_SUITE_P(Qt, TextFieldContract, testing::Values(qtScreen()), nameOf);
INSTANTIATE_TEST_SUITE_P(Qt, PopUpButtonContract, testing::Values(qtScreen()), nameOf);

} // namespace
} // namespace zarn
