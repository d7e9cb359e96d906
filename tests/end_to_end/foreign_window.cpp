// SPDX-License-Identifier: MIT
// A window of another program: zarn-foreign-window CLASS TITLE. Prints "shown" once it is on screen
// and stays until it is ended.
#include <xcb/xcb.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection))
        return 1;
    const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const auto window = xcb_generate_id(connection);
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 120, 80, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_EVENT_MASK, &events);
    const std::string title(argv[2]);
    const auto windowClass = "foreign" + std::string(1, '\0') + argv[1] + std::string(1, '\0');
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME,
        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(title.size()), title.data());
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS,
        XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(windowClass.size()), windowClass.data());
    xcb_map_window(connection, window);
    xcb_flush(connection);
    while (const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event{
        xcb_wait_for_event(connection), &std::free}) {
        if ((event->response_type & 0x7fU) == XCB_MAP_NOTIFY) {
            std::puts("shown");
            std::fflush(stdout);
        }
    }
    xcb_disconnect(connection);
    return 0;
}
