// SPDX-License-Identifier: MIT
#pragma once

#include "platform/clock.h"

namespace zarn::memory {

/// A clock that stands still until it is set. Starts at 2025-03-01 10:15:00 UTC, a Saturday.
class MemoryClock final : public Clock {
public:
    Date now() const override { return time; }
    Date time{1740824100};
};

/// English dates at a fixed offset from UTC. Supports the letters y M d H m s E.
class MemoryDateFormatter final : public DateFormatter {
public:
    std::string string(Date date, std::string_view pattern) const override;
    double secondsFromUtc = 0;
};

} // namespace zarn::memory
