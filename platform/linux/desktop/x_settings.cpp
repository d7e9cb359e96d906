// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/x_settings.h"

#include <QGuiApplication>

#include <array>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include <xcb/xcb.h>

namespace zarn::linux_backend {

namespace {

// In units of four bytes; a manager's settings take some kilobytes.
constexpr std::uint32_t longestValue = 65536;

struct Free {
    void operator()(void* pointer) const { std::free(pointer); }
};
template <typename Reply> using Owned = std::unique_ptr<Reply, Free>;

} // namespace

XSettings::XSettings(std::function<void()> changed)
    : m_changed(std::move(changed))
{
    const auto* display = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // Off the screen the toolkit has the interface, and no connection behind it.
    m_connection = display ? display->connection() : nullptr;
    if (!m_connection)
        return;
    constexpr std::array<std::string_view, 3> names{
        "_XSETTINGS_S0", "_XSETTINGS_SETTINGS", "MANAGER"};
    std::array<xcb_intern_atom_cookie_t, names.size()> cookies;
    for (std::size_t i = 0; i < names.size(); ++i)
        cookies[i] = xcb_intern_atom(
            m_connection, 0, static_cast<std::uint16_t>(names[i].size()), names[i].data());
    std::array<std::uint32_t*, names.size()> atoms{&m_selection, &m_property, &m_managerMessage};
    for (std::size_t i = 0; i < names.size(); ++i) {
        const Owned<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(m_connection, cookies[i], nullptr));
        *atoms[i] = reply ? reply->atom : std::uint32_t{XCB_ATOM_NONE};
    }
    read();
    QCoreApplication::instance()->installNativeEventFilter(this);
}

XSettings::~XSettings()
{
    if (m_connection)
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

void XSettings::read()
{
    m_look = {};
    const Owned<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        m_connection, xcb_get_selection_owner(m_connection, m_selection), nullptr));
    m_owner = owner ? owner->owner : std::uint32_t{XCB_WINDOW_NONE};
    if (m_owner == XCB_WINDOW_NONE)
        return;
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection, m_owner, XCB_CW_EVENT_MASK, &events);
    const Owned<xcb_get_property_reply_t> value(xcb_get_property_reply(m_connection,
        xcb_get_property(m_connection, 0, m_owner, m_property, m_property, 0, longestValue),
        nullptr));
    if (value)
        m_look = lookFromXSettings({static_cast<const char*>(xcb_get_property_value(value.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(value.get()))});
}

bool XSettings::nativeEventFilter(const QByteArray& type, void* message, qintptr*)
{
    if (type != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    bool isNews = false;
    switch (event->response_type & 0x7FU) {
    case XCB_PROPERTY_NOTIFY: {
        const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event);
        isNews = change->window == m_owner && change->atom == m_property;
        break;
    }
    case XCB_DESTROY_NOTIFY:
        isNews = m_owner != XCB_WINDOW_NONE
            && reinterpret_cast<const xcb_destroy_notify_event_t*>(event)->window == m_owner;
        break;
    case XCB_CLIENT_MESSAGE: {
        const auto* client = reinterpret_cast<const xcb_client_message_event_t*>(event);
        isNews = client->type == m_managerMessage && client->data.data32[1] == m_selection;
        break;
    }
    default:
        break;
    }
    if (isNews) {
        const auto before = m_look;
        read();
        if (m_look != before)
            m_changed();
    }
    return false;
}

} // namespace zarn::linux_backend
