// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/x11_windows.h"

#include <gtest/gtest.h>

namespace zarn::linux_backend {

/// Starts the tests of a program when the window manager is at work: one that has just started may
/// overlook the first window and never give it the keyboard.
class WindowManagerEnvironment final : public testing::Environment {
public:
    void SetUp() override
    {
        X11Windows windows;
        const auto window = windows.make(X11Windows::Managed::Yes);
        windows.show(window);
        windows.destroy(window);
    }
};

} // namespace zarn::linux_backend
