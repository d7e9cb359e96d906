// SPDX-License-Identifier: MIT
#include "tests/contract/linux/qt_screen.h"
#include "tests/contract/storyboard_contract.h"
#include "tests/support/window_manager_environment.h"

namespace zarn {
namespace {

using namespace linux_backend;

const auto* const environment = testing::AddGlobalTestEnvironment(new WindowManagerEnvironment);

INSTANTIATE_TEST_SUITE_P(Qt, StoryboardContract, testing::Values(qtScreen()),
    [](const auto& backend) { return backend.param.name; });

} // namespace
} // namespace zarn
