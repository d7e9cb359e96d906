// SPDX-License-Identifier: MIT
#pragma once

#include "platform/console.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace zarn {

/// Lends a console and returns what was written to it.
class ConsoleFixture {
public:
    virtual ~ConsoleFixture() = default;
    virtual Console& console() = 0;
    /// Everything so far, with the line breaks.
    virtual std::string written() = 0;
};

/// Made by the backend that this is linked with.
std::unique_ptr<ConsoleFixture> makeConsoleFixture();

/// What every console has to do.
class ConsoleContract : public testing::Test {
protected:
    const std::unique_ptr<ConsoleFixture> fixture = makeConsoleFixture();
};

} // namespace zarn
