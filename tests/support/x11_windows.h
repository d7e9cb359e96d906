// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <poll.h>

#include <xcb/xcb.h>

namespace zarn::linux_backend {

/// Windows of another program: a connection of its own to the X server.
class X11Windows {
public:
    X11Windows()
        : m_connection(xcb_connect(nullptr, nullptr))
        , m_screen(xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data)
    {
    }
    /// The connection stays, without its windows: the next one would be given the same numbers for
    /// its windows, and a busy window manager take them for these.
    ~X11Windows()
    {
        for (const auto window : m_windows)
            xcb_destroy_window(m_connection, window);
        sync();
        // Never destroyed: what it holds is still in use when the process ends.
        static auto& ended = *new std::vector<xcb_connection_t*>;
        ended.push_back(m_connection);
    }
    X11Windows(const X11Windows&) = delete;
    X11Windows& operator=(const X11Windows&) = delete;

    enum class Managed { Yes, No };
    /// A window that is not shown yet.
    xcb_window_t make(Managed managed = Managed::No, xcb_window_t parent = XCB_WINDOW_NONE,
        xcb_window_class_t kind = XCB_WINDOW_CLASS_INPUT_OUTPUT)
    {
        const auto window = xcb_generate_id(m_connection);
        const std::uint32_t values[]
            = {managed == Managed::No ? 1U : 0U, XCB_EVENT_MASK_VISIBILITY_CHANGE};
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window,
            parent == XCB_WINDOW_NONE ? m_screen->root : parent, 10, 10, 200, 100, 0,
            static_cast<std::uint16_t>(kind), XCB_COPY_FROM_PARENT,
            XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        m_windows.push_back(window);
        return window;
    }
    void setClass(xcb_window_t window, const std::string& instance, const std::string& name)
    {
        set(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, instance + '\0' + name + '\0');
    }
    void setTitle(xcb_window_t window, const std::string& utf8)
    {
        set(window, atom("_NET_WM_NAME"), atom("UTF8_STRING"), utf8);
    }
    void setOldTitle(xcb_window_t window, const std::string& latin1)
    {
        set(window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, latin1);
    }
    void setNumber(
        xcb_window_t window, std::string_view property, xcb_atom_t type, std::uint32_t value)
    {
        xcb_change_property(
            m_connection, XCB_PROP_MODE_REPLACE, window, atom(property), type, 32, 1, &value);
    }
    /// Returns when the window is on screen, or after 10 s. Asks again now and then: a window
    /// manager may overlook a request that comes while it is busy with another.
    void show(xcb_window_t window)
    {
        for (int attempt = 0; attempt < 100; ++attempt) {
            xcb_map_window(m_connection, window);
            xcb_flush(m_connection);
            if (hasBecomeVisible(window))
                return;
        }
    }
    /// Only of a window on screen.
    void takeFocus(xcb_window_t window)
    {
        xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
        sync();
    }
    void move(xcb_window_t window, int x, int y)
    {
        const std::int32_t place[] = {x, y};
        xcb_configure_window(
            m_connection, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place);
        sync();
    }
    void hide(xcb_window_t window)
    {
        xcb_unmap_window(m_connection, window);
        sync();
    }
    void destroy(xcb_window_t window)
    {
        xcb_destroy_window(m_connection, window);
        sync();
    }
    /// Without waiting: for windows that no event announces.
    void map(xcb_window_t window)
    {
        xcb_map_window(m_connection, window);
        sync();
    }
    xcb_atom_t atom(std::string_view name)
    {
        const auto cookie = xcb_intern_atom(
            m_connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
        auto* reply = xcb_intern_atom_reply(m_connection, cookie, nullptr);
        const auto result = reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
        std::free(reply);
        return result;
    }
    void sync()
    {
        std::free(
            xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    }
    void set(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const std::string& bytes)
    {
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, property, type, 8,
            static_cast<std::uint32_t>(bytes.size()), bytes.data());
    }
    /// Makes the window the owner of a manager's selection, and lets every program know.
    void manage(xcb_atom_t selection, xcb_window_t window)
    {
        xcb_set_selection_owner(m_connection, window, selection, XCB_CURRENT_TIME);
        xcb_client_message_event_t news{};
        news.response_type = XCB_CLIENT_MESSAGE;
        news.format = 32;
        news.window = m_screen->root;
        news.type = atom("MANAGER");
        news.data.data32[1] = selection;
        news.data.data32[2] = window;
        xcb_send_event(m_connection, 0, m_screen->root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
            reinterpret_cast<const char*>(&news));
        sync();
    }

private:
    /// Waits for the event, 100 ms at most.
    bool hasBecomeVisible(xcb_window_t window)
    {
        pollfd wait{xcb_get_file_descriptor(m_connection), POLLIN, 0};
        do {
            while (auto* event = xcb_poll_for_event(m_connection)) {
                const auto* visible = reinterpret_cast<xcb_visibility_notify_event_t*>(event);
                const bool isIt = (event->response_type & 0x7f) == XCB_VISIBILITY_NOTIFY
                    && visible->window == window;
                std::free(event);
                if (isIt)
                    return true;
            }
        } while (::poll(&wait, 1, 100) > 0);
        return false;
    }

    xcb_connection_t* m_connection;
    xcb_screen_t* m_screen;
    std::vector<xcb_window_t> m_windows;
};

} // namespace zarn::linux_backend
