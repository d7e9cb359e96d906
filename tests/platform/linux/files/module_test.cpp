// SPDX-License-Identifier: MIT
#include "platform/linux/files/module.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace zarn::linux_backend {
namespace {

// That of the installed program, and modules that are there: tests/packaging/installed_tree_test.
TEST(ModuleFunction, AMissingModuleEndsTheProcessWithOneLine)
{
    EXPECT_EXIT(moduleFunction("zarn-missing.so", "f"), testing::ExitedWithCode(EXIT_FAILURE),
        "^zarn-actions: the installation is broken: zarn-missing.so is not beside the "
        "program\n$");
}

} // namespace
} // namespace zarn::linux_backend
