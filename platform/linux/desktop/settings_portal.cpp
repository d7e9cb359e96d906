// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/settings_portal.h"

#include "platform/linux/desktop/portal_signal.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>

namespace zarn::linux_backend {

namespace {

constexpr const char* portalService = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* portalInterface = "org.freedesktop.portal.Settings";
constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* colorSchemeKey = "color-scheme";
constexpr unsigned preferDark = 1;

// "Read" wraps its answer in a second variant.
QVariant unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

SettingsPortal::SettingsPortal()
    : m_signal(std::make_unique<PortalSignal>())
{
    m_signal->received
        = [this](const QString& nameSpace, const QString& key, const QVariant& value) {
              if (nameSpace == appearance && key == colorSchemeKey)
                  adopt(unwrapped(value).toUInt());
          };
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    // The signal's slot is found by the names of its types, which have to be known by then.
    qRegisterMetaType<QDBusVariant>();
    bus.connect(portalService, portalPath, portalInterface, "SettingChanged", m_signal.get(),
        SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto read = QDBusMessage::createMethodCall(portalService, portalPath, portalInterface, "Read");
    read << QString(appearance) << QString(colorSchemeKey);
    constexpr int limit = 5000;
    m_firstAnswer = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(read, limit));
    QObject::connect(
        m_firstAnswer.get(), &QDBusPendingCallWatcher::finished, m_signal.get(), [this] {
            const QDBusPendingReply<QDBusVariant> reply(*m_firstAnswer);
            if (!reply.isError())
                adopt(unwrapped(QVariant::fromValue(reply.value())).toUInt());
            m_firstAnswer.release()->deleteLater();
        });
}

SettingsPortal::~SettingsPortal() = default;

void SettingsPortal::waitForFirstAnswer(std::chrono::milliseconds limit)
{
    if (!m_firstAnswer)
        return;
    const auto* names = QDBusConnection::sessionBus().interface();
    if (!names || !names->isServiceRegistered(portalService).value())
        return;
    QEventLoop loop;
    QObject::connect(
        m_firstAnswer.get(), &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(limit, &loop, &QEventLoop::quit);
    loop.exec();
}

std::optional<Value> SettingsPortal::object(std::string_view key) const
{
    if (key == "AppleInterfaceStyle" && m_prefersDark)
        return Value("Dark");
    return std::nullopt;
}

void SettingsPortal::addObserver(
    const void* observer, std::string_view name, std::function<void()> handler)
{
    m_observers.push_back({++m_lastId, observer, std::string(name), std::move(handler)});
}

void SettingsPortal::removeObserver(const void* observer, std::string_view name)
{
    std::erase_if(m_observers,
        [&](const Observer& entry) { return entry.observer == observer && entry.name == name; });
}

void SettingsPortal::adopt(unsigned colorScheme)
{
    const bool dark = colorScheme == preferDark;
    if (dark == m_prefersDark)
        return;
    m_prefersDark = dark;
    if (m_beforeObservers)
        m_beforeObservers(dark);
    // A handler may add or remove observers; one that was removed may be gone.
    const auto observers = m_observers;
    for (const auto& entry : observers) {
        const auto isSame = [&](const Observer& other) { return other.id == entry.id; };
        if (entry.name == interfaceThemeChanged
            && std::any_of(m_observers.begin(), m_observers.end(), isSame))
            entry.handler();
    }
}

} // namespace zarn::linux_backend
