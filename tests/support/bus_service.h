// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <functional>
#include <optional>
#include <vector>

namespace zarn::linux_backend {

/// A stand-in for a service of the desktop, on a connection of its own to the session bus. Answers
/// in the event loop of the thread that made it.
class BusService final : public QDBusVirtualObject {
public:
    /// The reply to a call; nothing to let the caller wait.
    using Answer = std::function<std::optional<QDBusMessage>(const QDBusMessage& call)>;

    BusService(const QString& service, const QString& path, Answer answer)
        : m_service(service)
        , m_path(path)
        , m_answer(std::move(answer))
        , m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, service))
    {
        m_isReady = m_bus.registerVirtualObject(path, this) && m_bus.registerService(service);
    }
    ~BusService() override
    {
        m_bus.unregisterService(m_service);
        QDBusConnection::disconnectFromBus(m_service);
    }
    BusService(const BusService&) = delete;
    BusService& operator=(const BusService&) = delete;

    bool isReady() const { return m_isReady; }
    void emitSignal(const QString& interface, const QString& name, const QVariantList& arguments)
    {
        auto message = QDBusMessage::createSignal(m_path, interface, name);
        message.setArguments(arguments);
        m_bus.send(message);
    }

    void reply(const QDBusMessage& message) { m_bus.send(message); }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        calls.push_back(message);
        if (const auto reply = m_answer(message))
            return bus.send(*reply);
        message.setDelayedReply(true);
        return true;
    }

    std::vector<QDBusMessage> calls;

private:
    QString m_service;
    QString m_path;
    Answer m_answer;
    QDBusConnection m_bus;
    bool m_isReady = false;
};

} // namespace zarn::linux_backend
