// SPDX-License-Identifier: MIT
#pragma once

#include "platform/window_list.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace zarn {

/// Lends a screen on which no window is open.
class WindowListFixture {
public:
    virtual ~WindowListFixture() = default;
    virtual WindowList& windowList() = 0;
    /// Another program opens a window in front of all others.
    virtual void open(const std::string& owner, const std::string& title) = 0;
    virtual void close(const std::string& title) = 0;
};

/// Made by the backend that this is linked with.
std::unique_ptr<WindowListFixture> makeWindowListFixture();

/// What every list of windows has to do.
class WindowListContract : public testing::Test {
protected:
    /// "owner/title" of each record, "-" for what is missing.
    std::vector<std::string> listed();

    std::unique_ptr<WindowListFixture> fixture = makeWindowListFixture();
};

} // namespace zarn
