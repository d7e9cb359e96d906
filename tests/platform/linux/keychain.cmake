# The keychain: unit tests, and the tests that kill, break and silence what it stands on.
zarn_add_test(keychain_file_test
    SOURCES file_keychain_test.cpp keychain_file_format_test.cpp keychain_memory_test.cpp
    LIBS zarn_linux_keychain
    LABELS security)
zarn_add_test(lazy_keychain_test
    SOURCES lazy_keychain_test.cpp
    LIBS zarn_linux_lazy_keychain)

add_executable(keychain_probe keychain_probe.cpp)
target_link_libraries(keychain_probe PRIVATE zarn_linux_lazy_keychain)
add_dependencies(keychain_probe zarn_keychain_module)
add_test(NAME keyring_states COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/keyring_states.py" "${PROJECT_BINARY_DIR}")
set_tests_properties(keyring_states PROPERTIES TIMEOUT 180 LABELS "security"
    ENVIRONMENT "ZARN_TEST_SLOWNESS=${zarn_slowness}")

add_executable(keychain_writer keychain_writer.cpp)
target_link_libraries(keychain_writer PRIVATE zarn_linux_keychain)
add_library(short_write MODULE ../../support/short_write.c)
set_target_properties(short_write PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}")
add_test(NAME keychain_faults COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/keychain_faults.py" "${PROJECT_BINARY_DIR}" ${zarn_sanitized})
set_tests_properties(keychain_faults PROPERTIES TIMEOUT 900 LABELS "security")
add_test(NAME keychain_move COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/keychain_move.py" "${PROJECT_BINARY_DIR}")
set_tests_properties(keychain_move PROPERTIES TIMEOUT 900 LABELS "security")
add_test(NAME zarn_keychain_tool COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/zarn_keychain_test.py" "${PROJECT_BINARY_DIR}")
set_tests_properties(zarn_keychain_tool PROPERTIES TIMEOUT 180)
