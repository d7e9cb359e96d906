// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/kde_globals.h"

#include <QFile>
#include <QStandardPaths>

#include <utility>

namespace zarn::linux_backend {

namespace {

constexpr qint64 longestFile = 1024L * 1024;

} // namespace

KdeGlobals::KdeGlobals(std::function<void()> changed)
    : m_changed(std::move(changed))
    , m_path(
          QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/kdeglobals")
{
    read();
    // The desktop replaces the file, which ends the watch of the old one.
    QObject::connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_watcher, [this] {
        const auto before = m_look;
        read();
        if (m_look != before)
            m_changed();
    });
}

void KdeGlobals::read()
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    m_look = lookFromKdeGlobals(file.read(longestFile).toStdString());
    m_watcher.addPath(m_path);
}

} // namespace zarn::linux_backend
