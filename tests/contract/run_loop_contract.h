// SPDX-License-Identifier: MIT
#pragma once

#include "platform/run_loop.h"

#include <gtest/gtest.h>

#include <memory>

namespace zarn {

/// Lends a run loop and plays its user.
class RunLoopFixture {
public:
    virtual ~RunLoopFixture() = default;
    virtual RunLoop& runLoop() = 0;
    /// The user interrupts.
    virtual void interrupt() = 0;
};

/// Made by the backend that this is linked with.
std::unique_ptr<RunLoopFixture> makeRunLoopFixture();

/// What every run loop has to do.
class RunLoopContract : public testing::Test {
protected:
    RunLoop& loop() { return fixture->runLoop(); }

    const std::unique_ptr<RunLoopFixture> fixture = makeRunLoopFixture();
};

} // namespace zarn
