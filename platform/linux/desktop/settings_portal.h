// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/settings/global_values.h"
#include "platform/notification_center.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class PortalSignal;
class QDBusPendingCallWatcher;

namespace zarn::linux_backend {

/// The desktop's colour preference, from the settings portal: as the global value
/// "AppleInterfaceStyle", and as the notification that it changed. Without a portal the desktop
/// prefers nothing, which is light. Main thread only.
class SettingsPortal final : public GlobalValues, public DistributedNotificationCenter {
public:
    /// Asks the portal; the answer comes later.
    SettingsPortal();
    ~SettingsPortal() override;
    SettingsPortal(const SettingsPortal&) = delete;
    SettingsPortal& operator=(const SettingsPortal&) = delete;

    /// Waits for the first answer, so that the first paint has the right colours; returns at once
    /// when there is no portal.
    void waitForFirstAnswer(std::chrono::milliseconds limit);
    bool prefersDark() const { return m_prefersDark; }
    /// Called before any observer when the preference has changed.
    void setBeforeObservers(std::function<void(bool dark)> apply)
    {
        m_beforeObservers = std::move(apply);
    }

    std::optional<Value> object(std::string_view key) const override;
    void addObserver(
        const void* observer, std::string_view name, std::function<void()> handler) override;
    void removeObserver(const void* observer, std::string_view name) override;

private:
    void adopt(unsigned colorScheme);

    struct Observer {
        std::uint64_t id;
        const void* observer;
        std::string name;
        std::function<void()> handler;
    };
    std::unique_ptr<PortalSignal> m_signal;
    std::vector<Observer> m_observers;
    std::uint64_t m_lastId = 0;
    std::function<void(bool)> m_beforeObservers;
    std::unique_ptr<QDBusPendingCallWatcher> m_firstAnswer;
    bool m_prefersDark = false;
};

} // namespace zarn::linux_backend
