// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace zarn {

/// The one thing that the server client and the configuration view need of alerts. Main thread
/// only.
class AlertDisplay {
public:
    virtual ~AlertDisplay() = default;

    /// Blocks until the user presses a button and returns its title. "OK" is always the first
    /// button; with an empty `secondButtonTitle` it is the only one.
    virtual std::string display(
        std::string_view header, std::string_view message, std::string_view secondButtonTitle)
        = 0;
};

} // namespace zarn
