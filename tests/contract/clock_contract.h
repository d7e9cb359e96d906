// SPDX-License-Identifier: MIT
#pragma once

#include "platform/clock.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace zarn {

struct ClockBackend {
    std::string name;
    std::function<std::unique_ptr<Clock>()> make;
};

/// What every clock has to do.
class ClockContract : public testing::TestWithParam<ClockBackend> {
protected:
    const std::unique_ptr<Clock> clock = GetParam().make();
};

} // namespace zarn
