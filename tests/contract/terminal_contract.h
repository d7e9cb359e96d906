// SPDX-License-Identifier: MIT
#pragma once

#include "platform/terminal.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace zarn {

/// Lends a terminal whose standard streams are none, and whose standard input has `input`.
class TerminalFixture {
public:
    virtual ~TerminalFixture() = default;
    virtual Terminal& terminal(const std::string& input) = 0;
    /// Everything so far.
    virtual std::string output() = 0;
    virtual std::string errors() = 0;
};

/// Made by the backend that this is linked with.
std::unique_ptr<TerminalFixture> makeTerminalFixture();

/// What every terminal has to do.
class TerminalContract : public testing::Test {
protected:
    const std::unique_ptr<TerminalFixture> fixture = makeTerminalFixture();
};

} // namespace zarn
