// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/bus_service.h"

#include <QUrl>

namespace zarn::linux_backend {

/// The desktop's file manager. Remembers the folders that it was asked to show.
class FakeFileManager {
public:
    enum class Manner { Shows, Refuses };
    explicit FakeFileManager(Manner manner = Manner::Shows)
        : m_manner(manner)
    {
    }
    bool isReady() const { return m_service.isReady(); }

    std::vector<std::string> folders;

private:
    Manner m_manner;
    BusService m_service{"org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
        [this](const QDBusMessage& call) -> std::optional<QDBusMessage> {
            const auto addresses
                = call.arguments().empty() ? QStringList() : call.arguments()[0].toStringList();
            if (m_manner == Manner::Refuses || call.member() != "ShowFolders"
                || call.signature() != "ass" || addresses.size() != 1
                || !addresses[0].startsWith("file:///"))
                return call.createErrorReply("org.freedesktop.DBus.Error.Failed", "No");
            folders.push_back(QUrl(addresses[0]).toLocalFile().toStdString());
            return call.createReply();
        }};
};

} // namespace zarn::linux_backend
