// SPDX-License-Identifier: MIT
#pragma once

#include "base/value.h"

#include <string>
#include <string_view>

namespace zarn {

/// The current time. Any thread.
class Clock {
public:
    virtual ~Clock() = default;
    virtual Date now() const = 0;
};

/// Dates as text. Any thread.
class DateFormatter {
public:
    virtual ~DateFormatter() = default;

    /// `date` in an ICU date `pattern`, in the default locale and the current time zone.
    virtual std::string string(Date date, std::string_view pattern) const = 0;
};

} // namespace zarn
