// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/desktop/desktop_look.h"

#include <QAbstractNativeEventFilter>

#include <cstdint>
#include <functional>

struct xcb_connection_t;

namespace zarn::linux_backend {

/// The look that the settings manager of an X display publishes, as Xfce and others run one. Uses
/// the toolkit's connection; knows nothing where the toolkit uses another display system. Main
/// thread only.
class XSettings final : public QAbstractNativeEventFilter {
public:
    /// `changed` is called when the manager publishes something new.
    explicit XSettings(std::function<void()> changed);
    ~XSettings() override;
    XSettings(const XSettings&) = delete;
    XSettings& operator=(const XSettings&) = delete;

    const DesktopLook& look() const { return m_look; }
    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

private:
    void read();

    std::function<void()> m_changed;
    xcb_connection_t* m_connection = nullptr;
    std::uint32_t m_selection = 0;
    std::uint32_t m_property = 0;
    std::uint32_t m_managerMessage = 0;
    std::uint32_t m_owner = 0;
    DesktopLook m_look;
};

} // namespace zarn::linux_backend
