// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/desktop_workspace.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QProcess>
#include <QUrl>

namespace zarn::linux_backend {

namespace {

// The opener of the desktop; the toolkit's own way is for systems without it.
void open(const QUrl& address)
{
    if (!QProcess::startDetached("xdg-open", {address.toString(QUrl::FullyEncoded)}))
        QDesktopServices::openUrl(address);
}

} // namespace

void DesktopWorkspace::openUrl(const Url& url)
{
    const QUrl address(QString::fromStdString(url.text()));
    if (address.scheme() == "https" || address.scheme() == "http")
        open(address);
}

void DesktopWorkspace::openFolder(const std::string& path)
{
    const auto address = QUrl::fromLocalFile(QString::fromStdString(path));
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        open(address);
        return;
    }
    auto show = QDBusMessage::createMethodCall("org.freedesktop.FileManager1",
        "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1", "ShowFolders");
    show << QStringList{address.toString(QUrl::FullyEncoded)} << QString();
    constexpr int limit = 10000;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(show, limit));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, address] {
        if (QDBusPendingReply<>(*watcher).isError())
            open(address);
        watcher->deleteLater();
    });
}

} // namespace zarn::linux_backend
