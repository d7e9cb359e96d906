// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace zarn {

/// Arrives when the desktop's colour preference changes.
inline constexpr std::string_view interfaceThemeChanged = "AppleInterfaceThemeChangedNotification";

/// Notifications between programs of the desktop. Main thread only, deliveries included.
class DistributedNotificationCenter {
public:
    virtual ~DistributedNotificationCenter() = default;

    /// `observer` only identifies the observer and is never dereferenced.
    virtual void addObserver(
        const void* observer, std::string_view name, std::function<void()> handler)
        = 0;
    /// The handler is not called any more, not even by a delivery in progress. Removing an observer
    /// that was never added does nothing.
    virtual void removeObserver(const void* observer, std::string_view name) = 0;
};

} // namespace zarn
