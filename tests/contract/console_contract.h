// SPDX-License-Identifier: MIT
#pragma once

#include "platform/console.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace zarn {

/// Lends a console and tells what was written to it.
class ConsoleFixture {
public:
    virtual ~ConsoleFixture() = default;
    virtual Console& console() = 0;
    /// Everything so far, with the line breaks.
    virtual std::string written() = 0;
};

struct ConsoleBackend {
    std::string name;
    std::function<std::unique_ptr<ConsoleFixture>()> make;
};

/// What every console has to do.
class ConsoleContract : public testing::TestWithParam<ConsoleBackend> {
protected:
    const std::unique_ptr<ConsoleFixture> fixture = GetParam().make();
};

} // namespace zarn
