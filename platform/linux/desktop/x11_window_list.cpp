// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/x11_window_list.h"

#include <QGuiApplication>
#include <QString>

#include <xcb/xcb.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
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
        , m_wmState(atom("WM_STATE"))
        , m_netWmPid(atom("_NET_WM_PID"))
        , m_windowType(atom("_NET_WM_WINDOW_TYPE"))
        , m_desktopType(atom("_NET_WM_WINDOW_TYPE_DESKTOP"))
        , m_dockType(atom("_NET_WM_WINDOW_TYPE_DOCK"))
    {
    }

    std::vector<WindowRecord> windows()
    {
        for (auto screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection)); screens.rem > 0;
             xcb_screen_next(&screens)) {
            for (const auto topLevel : children(screens.data->root))
                visit(topLevel, *screens.data);
        }
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

    struct Property {
        xcb_atom_t type = XCB_ATOM_NONE;
        std::string bytes;
    };

    Property property(xcb_window_t window, xcb_atom_t name)
    {
        constexpr std::uint32_t longest = 4096;
        const auto cookie = xcb_get_property(
            m_connection, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, longest);
        const Reply<xcb_get_property_reply_t> reply(
            xcb_get_property_reply(m_connection, cookie, nullptr));
        if (!reply)
            return {};
        const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
        return {
            reply->type, {static_cast<const char*>(xcb_get_property_value(reply.get())), length}};
    }

    std::string text(xcb_window_t window, xcb_atom_t name)
    {
        const auto found = property(window, name);
        return found.type == XCB_ATOM_STRING
            ? QString::fromLatin1(found.bytes.data(), qsizetype(found.bytes.size())).toStdString()
            : found.bytes;
    }

    static std::uint32_t firstNumber(const std::string& bytes)
    {
        std::uint32_t number = 0;
        if (bytes.size() >= sizeof number)
            bytes.copy(reinterpret_cast<char*>(&number), sizeof number);
        return number;
    }

    /// The children, the foremost first.
    std::vector<xcb_window_t> children(xcb_window_t window)
    {
        const Reply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
        if (!tree)
            return {};
        const auto* first = xcb_query_tree_children(tree.get());
        const auto length = xcb_query_tree_children_length(tree.get());
        return {std::reverse_iterator(first + length), std::reverse_iterator(first)};
    }

    bool isVisible(xcb_window_t window)
    {
        const Reply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
            m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
        return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE
            && attributes->_class != XCB_WINDOW_CLASS_INPUT_ONLY;
    }

    /// The foremost window on screen, this one or one in it, that has a property.
    std::optional<xcb_window_t> windowWith(xcb_atom_t name, xcb_window_t window, int depth = 0)
    {
        if (!isVisible(window))
            return std::nullopt;
        if (property(window, name).type != XCB_ATOM_NONE)
            return window;
        if (depth == deepest)
            return std::nullopt;
        for (const auto child : children(window)) {
            if (const auto found = windowWith(name, child, depth + 1))
                return found;
        }
        return std::nullopt;
    }

    /// The program's own window in a window manager's frame: it alone has a state. Just after it
    /// was shown not even it does; frames seldom have a class.
    xcb_window_t programWindow(xcb_window_t topLevel)
    {
        if (const auto found = windowWith(m_wmState, topLevel))
            return *found;
        return windowWith(XCB_ATOM_WM_CLASS, topLevel).value_or(topLevel);
    }

    /// Window managers park windows of their own beyond the edge.
    bool isWithin(const xcb_screen_t& screen, xcb_window_t topLevel)
    {
        const Reply<xcb_get_geometry_reply_t> place(xcb_get_geometry_reply(
            m_connection, xcb_get_geometry(m_connection, topLevel), nullptr));
        return place && place->x < screen.width_in_pixels && place->y < screen.height_in_pixels
            && place->x + place->width > 0 && place->y + place->height > 0;
    }

    void visit(xcb_window_t topLevel, const xcb_screen_t& screen)
    {
        if (!isVisible(topLevel) || !isWithin(screen, topLevel))
            return;
        const auto window = programWindow(topLevel);
        const auto windowClass = property(window, XCB_ATOM_WM_CLASS).bytes;
        auto title = text(window, m_netWmName);
        if (title.empty())
            title = text(window, XCB_ATOM_WM_NAME);
        const auto process = firstNumber(property(window, m_netWmPid).bytes);
        // Frames without a window in them, and what the server itself puts up.
        if (windowClass.empty() && title.empty() && process == 0)
            return;
        const auto type = firstNumber(property(window, m_windowType).bytes);
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
    xcb_atom_t m_wmState;
    xcb_atom_t m_netWmPid;
    xcb_atom_t m_windowType;
    xcb_atom_t m_desktopType;
    xcb_atom_t m_dockType;
    std::vector<WindowRecord> m_records;
};

} // namespace

std::optional<std::vector<WindowRecord>> X11WindowList::onScreen() const
{
    // Other platforms answer for this interface too, without a connection.
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 && x11->connection())
        return Screen(x11->connection()).windows();
    std::vector<WindowRecord> records;
    for (auto& title : m_ownTitles())
        records.push_back({QGuiApplication::applicationName().toStdString(), std::move(title)});
    return records;
}

} // namespace zarn::linux_backend
