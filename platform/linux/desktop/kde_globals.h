// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/desktop/desktop_look.h"

#include <QFileSystemWatcher>
#include <QString>

#include <functional>

namespace zarn::linux_backend {

/// The look that a KDE desktop keeps in the file kdeglobals of the user's configuration folder.
/// Main thread only.
class KdeGlobals final {
public:
    /// `changed` is called when the file says something new.
    explicit KdeGlobals(std::function<void()> changed);

    const DesktopLook& look() const { return m_look; }

private:
    void read();

    std::function<void()> m_changed;
    QString m_path;
    QFileSystemWatcher m_watcher;
    DesktopLook m_look;
};

} // namespace zarn::linux_backend
