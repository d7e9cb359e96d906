// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/desktop_preferences.h"

#include "platform/linux/desktop/portal_signal.h"

#include <QDBusArgument>
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
constexpr const char* gnomeInterface = "org.gnome.desktop.interface";
constexpr const char* gnomeAccessibility = "org.gnome.desktop.a11y.interface";
constexpr unsigned preferDark = 1;
constexpr unsigned preferMoreContrast = 1;

using Settings = QMap<QString, QVariantMap>;

std::optional<std::uint32_t> colorFrom(const QVariant& value)
{
    if (!value.canConvert<QDBusArgument>())
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != "(ddd)")
        return std::nullopt;
    double red = -1;
    double green = -1;
    double blue = -1;
    argument.beginStructure();
    argument >> red >> green >> blue;
    argument.endStructure();
    return colorFromParts(red, green, blue);
}

std::optional<DesktopLook::Font> gnomeFont(const std::string& name)
{
    auto font = fontFromName(name);
    if (font)
        font->usualPoints = 11;
    return font;
}

bool isKdeSession()
{
    const auto names = qgetenv("XDG_CURRENT_DESKTOP").split(':');
    return names.contains("KDE");
}

} // namespace

DesktopPreferences::DesktopPreferences()
    : m_signal(std::make_unique<PortalSignal>())
    , m_isKde(isKdeSession())
    , m_kdeGlobals([this] { update(); })
    , m_xSettings([this] { update(); })
{
    update();
    m_signal->received
        = [this](const QString& nameSpace, const QString& key, const QVariant& value) {
              adopt(nameSpace.toStdString(), key.toStdString(), value);
              update();
          };
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    // The signal's slot is found by the names of its types, which have to be known by then.
    qRegisterMetaType<QDBusVariant>();
    bus.connect(portalService, portalPath, portalInterface, "SettingChanged", m_signal.get(),
        SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto read
        = QDBusMessage::createMethodCall(portalService, portalPath, portalInterface, "ReadAll");
    read << QStringList{appearance, gnomeInterface, gnomeAccessibility};
    constexpr int limit = 5000;
    m_firstReply = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(read, limit));
    QObject::connect(
        m_firstReply.get(), &QDBusPendingCallWatcher::finished, m_signal.get(), [this] {
            const auto reply = m_firstReply->reply();
            if (reply.type() == QDBusMessage::ReplyMessage && reply.signature() == "a{sa{sv}}") {
                const auto settings = qdbus_cast<Settings>(reply.arguments().at(0));
                for (auto group = settings.begin(); group != settings.end(); ++group) {
                    for (auto entry = group->begin(); entry != group->end(); ++entry)
                        adopt(group.key().toStdString(), entry.key().toStdString(), entry.value());
                }
                update();
            }
            m_firstReply.release()->deleteLater();
        });
}

DesktopPreferences::~DesktopPreferences() = default;

void DesktopPreferences::waitForFirstReply(std::chrono::milliseconds limit)
{
    if (!m_firstReply)
        return;
    const auto* names = QDBusConnection::sessionBus().interface();
    if (!names || !names->isServiceRegistered(portalService).value())
        return;
    QEventLoop loop;
    QObject::connect(
        m_firstReply.get(), &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(limit, &loop, &QEventLoop::quit);
    loop.exec();
}

std::optional<Value> DesktopPreferences::object(std::string_view key) const
{
    if (key == "AppleInterfaceStyle" && prefersDark())
        return Value("Dark");
    return std::nullopt;
}

void DesktopPreferences::addObserver(
    const void* observer, std::string_view name, std::function<void()> handler)
{
    m_observers.push_back({++m_lastId, observer, std::string(name), std::move(handler)});
}

void DesktopPreferences::removeObserver(const void* observer, std::string_view name)
{
    std::erase_if(m_observers,
        [&](const Observer& entry) { return entry.observer == observer && entry.name == name; });
}

void DesktopPreferences::adopt(
    const std::string& nameSpace, const std::string& key, const QVariant& value)
{
    if (nameSpace == appearance && key == "color-scheme")
        m_portal.dark = value.toUInt() == preferDark;
    else if (nameSpace == appearance && key == "accent-color")
        m_portal.accent = colorFrom(value);
    else if (nameSpace == appearance && key == "contrast")
        m_contrast = value.toUInt() == preferMoreContrast;
    else if (nameSpace == gnomeAccessibility && key == "high-contrast")
        m_gnomeContrast = value.toBool();
    else if (nameSpace == gnomeInterface && key == "font-name")
        m_portal.font = gnomeFont(value.toString().toStdString());
    else if (nameSpace == gnomeInterface && key == "text-scaling-factor")
        m_portal.textScale = usableTextScale(value.toDouble());
}

void DesktopPreferences::update()
{
    // A portal that reports no wish for contrast does not speak for a theme that has it.
    m_portal.highContrast = m_contrast || m_gnomeContrast ? std::optional(true) : std::nullopt;
    const auto& kde = m_kdeGlobals.look();
    const auto& x = m_xSettings.look();
    auto look = combined({m_portal, kde, x});
    look.font = combined({m_isKde ? kde : DesktopLook(), x, m_portal, kde}).font;
    look.textScale = combined({x, m_portal}).textScale;
    if (look == m_look)
        return;
    const bool wasDark = prefersDark();
    m_look = look;
    if (m_beforeObservers)
        m_beforeObservers();
    if (prefersDark() != wasDark)
        notifyObservers();
}

void DesktopPreferences::notifyObservers()
{
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
