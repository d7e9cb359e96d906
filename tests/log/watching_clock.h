// SPDX-License-Identifier: MIT
#pragma once

#include "platform/memory/memory_clock.h"

#include <functional>
#include <utility>

namespace zarn {

/// A clock that reports when it is read. The log does once for each line, before it is
/// written: so a test sees where a line stands among other things that happen.
class WatchingClock final : public Clock {
public:
    explicit WatchingClock(std::function<void()> onLook)
        : m_onLook(std::move(onLook))
    {
    }
    Date now() const override
    {
        m_onLook();
        return memory::MemoryClock().now();
    }

private:
    std::function<void()> m_onLook;
};

} // namespace zarn
