# The services of the desktop.
find_package(PkgConfig REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Core DBus Gui)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb)
add_library(zarn_desktop_fakes INTERFACE)
target_link_libraries(zarn_desktop_fakes INTERFACE Qt6::Gui Qt6::DBus PkgConfig::XCB)
foreach(name IN ITEMS notification window_list workspace)
    zarn_add_desktop_test(${name}_test
        SOURCES ${name}_test.cpp
        LIBS zarn_linux_desktop zarn_desktop_fakes
        DESKTOP --no-keyring --no-a11y
        LABELS desktop)
endforeach()
add_test(NAME window_list_test.under_a_window_manager
    COMMAND "${PROJECT_SOURCE_DIR}/tests/support/with_desktop" --timeout 120 --no-keyring --no-a11y
        --wm openbox -- $<TARGET_FILE:window_list_test>)
set_tests_properties(window_list_test.under_a_window_manager PROPERTIES TIMEOUT 150 LABELS desktop)
zarn_add_desktop_test(private_windows_test
    SOURCES private_windows_test.cpp
    LIBS zarn_linux_desktop zarn_desktop_fakes
    DESKTOP --no-x --no-bus
    LABELS desktop)
zarn_add_test(single_instance_test SOURCES single_instance_test.cpp LIBS zarn_linux_desktop)
zarn_add_desktop_test(session_end_test
    SOURCES session_end_test.cpp
    LIBS zarn_linux_ui
    DESKTOP --no-x --no-bus
    LABELS desktop)
