// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/bus_service.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QMap>

/// A colour of the portal: three parts from 0 to 1.
struct PortalColor {
    double red = 0;
    double green = 0;
    double blue = 0;
};

inline QDBusArgument& operator<<(QDBusArgument& argument, const PortalColor& color)
{
    argument.beginStructure();
    argument << color.red << color.green << color.blue;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument& operator>>(const QDBusArgument& argument, PortalColor& color)
{
    argument.beginStructure();
    argument >> color.red >> color.green >> color.blue;
    argument.endStructure();
    return argument;
}

namespace zarn::linux_backend {

/// The desktop's settings portal.
class FakeSettingsPortal {
public:
    using Settings = QMap<QString, QVariantMap>;
    enum class Manner { Answers, Refuses, KeepsSilent };
    explicit FakeSettingsPortal(unsigned colorScheme, Manner manner = Manner::Answers)
        : FakeSettingsPortal(
            Settings{{"org.freedesktop.appearance", {{"color-scheme", colorScheme}}}}, manner)
    {
    }
    explicit FakeSettingsPortal(Settings settings, Manner manner = Manner::Answers)
        : m_settings(std::move(settings))
        , m_manner(manner)
    {
        qDBusRegisterMetaType<PortalColor>();
        qDBusRegisterMetaType<Settings>();
    }

    void setColorScheme(unsigned value)
    {
        change("org.freedesktop.appearance", "color-scheme", value);
    }
    void change(const QString& nameSpace, const QString& key, const QVariant& value)
    {
        m_settings[nameSpace][key] = value;
        emitChange(nameSpace, key, value);
    }
    void emitChange(const QString& nameSpace, const QString& key, const QVariant& value)
    {
        m_service.emitSignal("org.freedesktop.portal.Settings", "SettingChanged",
            {nameSpace, key, QVariant::fromValue(QDBusVariant(value))});
    }
    bool isReady() const { return m_service.isReady(); }
    std::size_t reads() const { return m_service.calls.size(); }
    /// A reply to the last call, long after it came.
    void answerAtLast() { m_service.reply(answerTo(m_service.calls.back())); }

private:
    QDBusMessage answerTo(const QDBusMessage& call) const
    {
        Settings wanted;
        for (const auto& nameSpace : call.arguments().value(0).toStringList()) {
            if (m_settings.contains(nameSpace))
                wanted[nameSpace] = m_settings[nameSpace];
        }
        return call.createReply(QVariant::fromValue(wanted));
    }

    Settings m_settings;
    Manner m_manner;
    BusService m_service{"org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
        [this](const QDBusMessage& call) -> std::optional<QDBusMessage> {
            if (m_manner == Manner::KeepsSilent)
                return std::nullopt;
            if (m_manner == Manner::Refuses || call.member() != "ReadAll")
                return call.createErrorReply(
                    "org.freedesktop.portal.Error.NotFound", "Requested setting not found");
            return answerTo(call);
        }};
};

} // namespace zarn::linux_backend
