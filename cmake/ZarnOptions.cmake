# One interface target carries every compiler option; each of our targets links it privately.
include_guard(GLOBAL)
include(CheckLinkerFlag)

option(ZARN_WERROR "Treat warnings as errors (set by CI; a packager's newer compiler must not break)" OFF)
set(ZARN_SANITIZE "" CACHE STRING "Sanitizers: empty, 'address;undefined' or 'thread'")
option(ZARN_FUZZ "Build the fuzz targets (needs Clang)" OFF)

add_library(zarn_options INTERFACE)
target_compile_features(zarn_options INTERFACE cxx_std_20)
target_include_directories(zarn_options INTERFACE "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}/generated")
target_compile_options(zarn_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -fstack-protector-strong
    # Everywhere, because some libraries ask for it and precompiled headers must agree.
    -pthread)
if(CMAKE_BUILD_TYPE MATCHES "Rel" AND NOT ZARN_SANITIZE)
    target_compile_definitions(zarn_options INTERFACE _FORTIFY_SOURCE=2)
endif()
# Tables that the loader has filled in are read-only from then on, where the linker knows how.
check_linker_flag(CXX -Wl,-z,relro,-z,now zarn_linker_has_relro)
if(zarn_linker_has_relro)
    target_link_options(zarn_options INTERFACE -Wl,-z,relro,-z,now)
endif()
if(ZARN_WERROR)
    target_compile_options(zarn_options INTERFACE -Werror)
endif()
if(ZARN_SANITIZE)
    list(JOIN ZARN_SANITIZE "," zarn_sanitizers)
    target_compile_options(zarn_options INTERFACE
        -fsanitize=${zarn_sanitizers} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(zarn_options INTERFACE -fsanitize=${zarn_sanitizers})
    # The standard library checks its own preconditions too.
    target_compile_definitions(zarn_options INTERFACE _GLIBCXX_ASSERTIONS)
    if(NOT ZARN_FUZZ)
        # Built to be tested once: this halves the compiler's work, and reports keep their lines.
        target_compile_options(zarn_options INTERFACE -O1 -g1)
        target_sources(zarn_options INTERFACE
            "$<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:${CMAKE_CURRENT_LIST_DIR}/sanitizer_defaults.cpp>")
    endif()
endif()
if(ZARN_FUZZ)
    target_compile_options(zarn_options INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(zarn_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# zarn_add_library(NAME [HEADERS ...] [SOURCES ...] [PUBLIC ...] [PRIVATE ...] [PRECOMPILE ...])
# A static library, or one of headers alone. That x.h compiles on its own is proved by x.cpp, which
# includes it first (CheckIncludes.cmake sees to that). The target all_verify_interface_header_sets
# compiles the headers that have no such source, and all of a library that precompiles headers of its
# own. The others share those of zarn_base, which are the standard library's. Only the preset "release"
# precompiles: with the others a source that misses an include is found.
function(zarn_add_library name)
    cmake_parse_arguments(arg "" "" "HEADERS;SOURCES;PUBLIC;PRIVATE;PRECOMPILE" ${ARGN})
    set(visible PUBLIC)
    if(arg_SOURCES)
        add_library(${name} STATIC ${arg_SOURCES})
        target_link_libraries(${name} PRIVATE ${arg_PRIVATE})
    else()
        add_library(${name} INTERFACE)
        set(visible INTERFACE)
    endif()
    set(to_verify ${arg_HEADERS})
    if(arg_PRECOMPILE)
        target_precompile_headers(${name} PRIVATE ${arg_PRECOMPILE})
    else()
        if(arg_SOURCES AND NOT name STREQUAL "zarn_base")
            target_precompile_headers(${name} REUSE_FROM zarn_base)
        endif()
        string(REGEX REPLACE "[.]cpp(;|$)" ".h\\1" with_source "${arg_SOURCES}")
        list(REMOVE_ITEM to_verify ${with_source})
    endif()
    target_sources(${name} ${visible}
        FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${arg_HEADERS}
        FILE_SET to_verify TYPE HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${to_verify})
    set_target_properties(${name} PROPERTIES INTERFACE_HEADER_SETS_TO_VERIFY to_verify)
    target_link_libraries(${name} ${visible} zarn_options ${arg_PUBLIC})
endfunction()
