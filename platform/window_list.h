// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zarn {

/// One window on screen. Either text may be missing.
struct WindowRecord {
    std::optional<std::string> ownerName;
    std::optional<std::string> windowName;
};

/// The windows on screen, desktop elements excluded. Main thread only.
class WindowList {
public:
    virtual ~WindowList() = default;
    /// The windows of all programs, front to back where the display system gives an order. Where it
    /// keeps them private: the program's own. Nothing only without a working display.
    virtual std::optional<std::vector<WindowRecord>> onScreen() const = 0;
};

} // namespace zarn
