# The serial queue and the keychain.
pkg_check_modules(LIBSECRET REQUIRED IMPORTED_TARGET libsecret-unstable)
pkg_check_modules(SODIUM REQUIRED IMPORTED_TARGET libsodium)

zarn_add_library(zarn_linux_queue
    HEADERS thread_serial_queue.h
    SOURCES thread_serial_queue.cpp
    PUBLIC zarn_platform
    PRIVATE Threads::Threads)

# What the program links: no third-party library.
zarn_add_library(zarn_linux_lazy_keychain
    HEADERS keychain_module.h keychain_store.h lazy_keychain.h wipe.h
    SOURCES keychain_store.cpp lazy_keychain.cpp
    PUBLIC zarn_linux_base zarn_platform
    PRIVATE Threads::Threads)

zarn_add_library(zarn_linux_keychain
    HEADERS
        file_keychain.h glib_await.h keychain_factory.h keychain_file_format.h keychain_reports.h
        moving_keychain.h secret_connection.h secret_keyring.h secret_prompt.h
        secret_service_keychain.h
    SOURCES
        file_keychain.cpp glib_await.cpp keychain_factory.cpp keychain_file_format.cpp
        keychain_reports.cpp moving_keychain.cpp secret_connection.cpp secret_keyring.cpp
        secret_prompt.cpp secret_service_keychain.cpp
    PUBLIC zarn_linux_lazy_keychain PkgConfig::LIBSECRET
    PRIVATE PkgConfig::SODIUM)

add_library(zarn_keychain_module MODULE keychain_module.cpp)
target_link_libraries(zarn_keychain_module PRIVATE zarn_linux_keychain)
target_link_options(zarn_keychain_module PRIVATE -Wl,--exclude-libs,ALL)
set_target_properties(zarn_keychain_module PROPERTIES
    PREFIX "" OUTPUT_NAME zarn-keychain LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}")

add_executable(zarn-keychain tools/zarn_keychain.cpp)
target_link_libraries(zarn-keychain PRIVATE zarn_linux_keychain)
# The calls by object path, which can be bounded in time; stable since 0.18 in all but name.
target_compile_definitions(zarn_linux_keychain PUBLIC SECRET_API_SUBJECT_TO_CHANGE)
