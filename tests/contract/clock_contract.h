// SPDX-License-Identifier: MIT
#pragma once

#include "platform/clock.h"

#include <gtest/gtest.h>

#include <memory>

namespace zarn {

/// Made by the backend that this is linked with.
std::unique_ptr<Clock> makeClock();

/// What every clock has to do.
class ClockContract : public testing::Test {
protected:
    const std::unique_ptr<Clock> clock = makeClock();
};

} // namespace zarn
