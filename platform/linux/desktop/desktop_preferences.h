// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/desktop/desktop_look.h"
#include "platform/linux/desktop/kde_globals.h"
#include "platform/linux/desktop/x_settings.h"
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
class QVariant;

namespace zarn::linux_backend {

/// What the user has chosen for every program of the desktop: font, text size, colours. The colour
/// preference is also the global value "AppleInterfaceStyle", and its change a notification.
///
/// The sources, first one first, each member by itself:
/// - colours, contrast: the settings portal, kdeglobals, the X settings manager;
/// - the text size: the X settings manager, which has it in the resolution, the settings portal;
/// - the font: kdeglobals in a KDE session, the X settings manager, the settings portal,
/// kdeglobals. A
///   portal may report the default font of a desktop that is not the one that runs.
/// Where none says anything, the desktop prefers nothing, which is light. Main thread only.
class DesktopPreferences final : public GlobalValues, public DistributedNotificationCenter {
public:
    /// Asks the portal; the reply comes later.
    DesktopPreferences();
    ~DesktopPreferences() override;
    DesktopPreferences(const DesktopPreferences&) = delete;
    DesktopPreferences& operator=(const DesktopPreferences&) = delete;

    /// Waits for the portal's first reply, so that the first paint is right; returns at once when
    /// there is no portal.
    void waitForFirstReply(std::chrono::milliseconds limit);
    const DesktopLook& look() const { return m_look; }
    bool prefersDark() const { return m_look.dark.value_or(false); }
    /// Called when the look has changed, before any observer.
    void setBeforeObservers(std::function<void()> apply) { m_beforeObservers = std::move(apply); }

    std::optional<Value> object(std::string_view key) const override;
    void addObserver(
        const void* observer, std::string_view name, std::function<void()> handler) override;
    void removeObserver(const void* observer, std::string_view name) override;

private:
    void adopt(const std::string& nameSpace, const std::string& key, const QVariant& value);
    void update();
    void notifyObservers();

    struct Observer {
        std::uint64_t id;
        const void* observer;
        std::string name;
        std::function<void()> handler;
    };
    std::unique_ptr<PortalSignal> m_signal;
    std::vector<Observer> m_observers;
    std::uint64_t m_lastId = 0;
    std::function<void()> m_beforeObservers;
    std::unique_ptr<QDBusPendingCallWatcher> m_firstReply;
    bool m_isKde;
    DesktopLook m_portal;
    /// Two settings of the portal ask for more contrast.
    bool m_contrast = false;
    bool m_gnomeContrast = false;
    KdeGlobals m_kdeGlobals;
    XSettings m_xSettings;
    DesktopLook m_look;
};

} // namespace zarn::linux_backend
