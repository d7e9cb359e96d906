// SPDX-License-Identifier: MIT
#include "platform/linux/x11_window_list.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <string_view>

namespace zarn::linux_backend {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T> using Reply = std::unique_ptr<T, Free>;

/// One look at the screen.
class Screen {
public:
    explicit Screen(xcb_connection_t* connection)
        : m_connection(connection)
        , m_netWmName(atom("_NET_WM_NAME"))
        , m_netWmPid(atom("_NET_WM_PID"))
        , m_windowType(atom("_NET_WM_WINDOW_TYPE"))
        , m_desktopType(atom("_NET_WM_WINDOW_TYPE_DESKTOP"))
        , m_dockType(atom("_NET_WM_WINDOW_TYPE_DOCK"))
    {
    }

    std::vector<WindowRecord> windows()
    {
        for (auto screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection)); screens.rem > 0;
             xcb_screen_next(&screens))
            visitChildren(screens.data->root, 0);
        return std::move(m_records);
    }

private:
    // A window manager puts a program's window a few levels into frames of its own.
    static constexpr int deepest = 4;

    xcb_atom_t atom(std::string_view name)
    {
        const auto cookie = xcb_intern_atom(
            m_connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
        const Reply<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(m_connection, cookie, nullptr));
        return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    }

    std::string property(xcb_window_t window, xcb_atom_t name)
    {
        constexpr std::uint32_t longest = 4096;
        const auto cookie = xcb_get_property(
            m_connection, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, longest);
        const Reply<xcb_get_property_reply_t> reply(
            xcb_get_property_reply(m_connection, cookie, nullptr));
        if (!reply)
            return "";
        const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
        return {static_cast<const char*>(xcb_get_property_value(reply.get())), length};
    }

    static std::uint32_t firstNumber(const std::string& bytes)
    {
        std::uint32_t number = 0;
        if (bytes.size() >= sizeof number)
            bytes.copy(reinterpret_cast<char*>(&number), sizeof number);
        return number;
    }

    void visitChildren(xcb_window_t window, int depth)
    {
        const Reply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
        if (!tree)
            return;
        const auto* children = xcb_query_tree_children(tree.get());
        // The tree lists the hindmost first.
        for (int i = xcb_query_tree_children_length(tree.get()); i-- > 0;)
            visit(children[i], depth);
    }

    void visit(xcb_window_t window, int depth)
    {
        const Reply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
            m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
            return;
        const auto windowClass = property(window, XCB_ATOM_WM_CLASS);
        auto title = property(window, m_netWmName);
        if (title.empty())
            title = property(window, XCB_ATOM_WM_NAME);
        const auto process = firstNumber(property(window, m_netWmPid));
        if (windowClass.empty() && title.empty() && process == 0) {
            if (depth < deepest)
                visitChildren(window, depth + 1);
            return;
        }
        const auto type = firstNumber(property(window, m_windowType));
        if (type != 0 && (type == m_desktopType || type == m_dockType))
            return;
        WindowRecord record;
        record.ownerName = ownerOf(windowClass, process);
        if (!title.empty())
            record.windowName = title;
        m_records.push_back(std::move(record));
    }

    static std::optional<std::string> ownerOf(const std::string& windowClass, std::uint32_t process)
    {
        // Two texts, each ended by a zero byte: the instance and the class.
        if (const auto end = windowClass.find('\0'); end != std::string::npos) {
            auto name = windowClass.substr(end + 1);
            name = name.substr(0, name.find('\0'));
            if (!name.empty())
                return name;
        }
        std::string name;
        if (process != 0)
            std::getline(std::ifstream("/proc/" + std::to_string(process) + "/comm"), name);
        return name.empty() ? std::nullopt : std::optional(name);
    }

    xcb_connection_t* m_connection;
    xcb_atom_t m_netWmName;
    xcb_atom_t m_netWmPid;
    xcb_atom_t m_windowType;
    xcb_atom_t m_desktopType;
    xcb_atom_t m_dockType;
    std::vector<WindowRecord> m_records;
};

} // namespace

std::optional<std::vector<WindowRecord>> X11WindowList::onScreen() const
{
    if (const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>())
        return Screen(x11->connection()).windows();
    std::vector<WindowRecord> records;
    for (auto& title : m_ownTitles())
        records.push_back({QGuiApplication::applicationName().toStdString(), std::move(title)});
    return records;
}

bool isDisplayReachable()
{
    const auto isSet = [](const char* name) {
        const char* value = std::getenv(name);
        return value && *value;
    };
    if (isSet("QT_QPA_PLATFORM") || isSet("WAYLAND_DISPLAY"))
        return true;
    if (!isSet("DISPLAY"))
        return false;
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool reachable = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return reachable;
}

} // namespace zarn::linux_backend
