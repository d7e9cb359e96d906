// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QString>

#include <functional>

/// Receives the settings portal's signal. Apart from its user because the toolkit's compiler for
/// such classes cannot read every standard header.
class PortalSignal : public QObject {
    Q_OBJECT

public:
    std::function<void(const QString& nameSpace, const QString& key, const QVariant& value)>
        received;

public slots:
    void settingChanged(
        const QString& nameSpace, const QString& key, const QDBusVariant& value) const
    {
        received(nameSpace, key, value.variant());
    }
};
