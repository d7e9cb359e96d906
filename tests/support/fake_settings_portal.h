// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/bus_service.h"

#include <QDBusVariant>

namespace zarn::linux_backend {

/// The desktop's settings portal, as far as the colour preference goes.
class FakeSettingsPortal {
public:
    enum class Manner { Answers, Refuses, KeepsSilent };
    explicit FakeSettingsPortal(unsigned colorScheme, Manner manner = Manner::Answers)
        : m_colorScheme(colorScheme)
        , m_manner(manner)
    {
    }

    void setColorScheme(unsigned value)
    {
        m_colorScheme = value;
        emitChange("org.freedesktop.appearance", "color-scheme", value);
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
        // The portal wraps the value twice.
        const QDBusVariant inner{QVariant(m_colorScheme)};
        return call.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(inner))));
    }

    unsigned m_colorScheme;
    Manner m_manner;
    BusService m_service{"org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
        [this](const QDBusMessage& call) -> std::optional<QDBusMessage> {
            if (m_manner == Manner::KeepsSilent)
                return std::nullopt;
            const QVariantList wanted{"org.freedesktop.appearance", "color-scheme"};
            if (m_manner == Manner::Refuses || call.member() != "Read"
                || call.arguments() != wanted)
                return call.createErrorReply(
                    "org.freedesktop.portal.Error.NotFound", "Requested setting not found");
            return answerTo(call);
        }};
};

} // namespace zarn::linux_backend
