// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace zarn {

/// Notifications between programs of the desktop. Main thread only, deliveries included.
/// "AppleInterfaceThemeChangedNotification" arrives when the colour preference changes.
class DistributedNotificationCenter {
public:
    virtual ~DistributedNotificationCenter() = default;

    /// `observer` is an identity only and is never dereferenced.
    virtual void addObserver(
        const void* observer, std::string_view name, std::function<void()> handler)
        = 0;
    /// The handler is not called any more, not even by a delivery that is under way. Removing what
    /// was never added does nothing.
    virtual void removeObserver(const void* observer, std::string_view name) = 0;
};

} // namespace zarn
