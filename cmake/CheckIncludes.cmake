# SPDX-License-Identifier: MIT
# cmake -D ROOT=<folder> -P CheckIncludes.cmake
# The dependency rule: the core includes the standard library, base/*.h, platform/*.h and what its arrows
# allow, and knows no platform. The compiler alone would not notice: some third-party headers are
# reachable without being asked for. A backend includes any library, but of ours only what its arrows
# allow.
cmake_minimum_required(VERSION 3.25)

set(core app terminal profiles api update log base platform platform/memory)
set(arrows_app app profiles api update log base platform)
set(arrows_terminal terminal app profiles api log base platform)
set(arrows_profiles profiles api log base platform)
set(arrows_api api log base platform)
set(arrows_update update base platform)
set(arrows_log log base platform)
set(arrows_base base)
set(arrows_platform base platform)
set(arrows_platform/memory platform/memory base platform)

# Every other folder of platform/ is a backend. Its root is the composition, which names the folders
# inside it; their arrows are in its arrows.cmake.
file(GLOB backends RELATIVE "${ROOT}" "${ROOT}/platform/*")
list(REMOVE_ITEM backends ${core})
set(backend_folders)
foreach(backend IN LISTS backends)
    if(NOT IS_DIRECTORY "${ROOT}/${backend}")
        continue()
    endif()
    set(arrows)
    include("${ROOT}/${backend}/arrows.cmake" OPTIONAL)
    list(APPEND backend_folders ${backend})
    set(arrows_${backend} base platform ${backend})
    foreach(line IN LISTS arrows)
        string(REGEX MATCHALL "[^: ]+" inside "${line}")
        list(TRANSFORM inside PREPEND "${backend}/")
        list(GET inside 0 folder)
        list(APPEND backend_folders ${folder})
        set(arrows_${folder} base platform ${inside})
        list(APPEND arrows_${backend} ${folder})
    endforeach()
endforeach()

# Named one by one: a name of small letters alone may be anybody's. C and POSIX headers end in ".h".
set(standard_headers
    algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono
    cinttypes climits clocale cmath codecvt compare complex concepts condition_variable coroutine
    csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque
    exception execution filesystem format forward_list fstream functional future initializer_list
    iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource
    mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator
    semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf
    string string_view strstream syncstream system_error thread tuple type_traits typeindex typeinfo
    unordered_map unordered_set utility valarray variant vector version)
# The one source that includes a library: it compiles slowly, and base/json.h is all that anybody needs.
set(json_source "^base/json\\.cpp$")
set(json_library "nlohmann/")
# The same for the options of a command line.
set(options_source "^terminal/command_line\\.cpp$")
set(options_library "^CLI/")
set(platform_macros
    "__linux__|__linux|__gnu_linux__|__unix__|__unix|__APPLE__|__MACH__|_WIN32|_WIN64|__FreeBSD__|__ANDROID__|Q_OS_[A-Z]+|TARGET_OS_[A-Z]+")

set(violations)
macro(violation file line text)
    string(STRIP "${line}" stripped)
    list(APPEND violations "${file}: ${stripped}: ${text}")
endmacro()

macro(check_quoted folder file line header)
    string(REGEX REPLACE "/[^/]*$" "" target "${header}")
    if("${header}" MATCHES "(^|/)\\.\\.?/" OR NOT "${header}" MATCHES "^[^/].*/[^/]+\\.h$")
        violation("${file}" "${line}" "include paths begin at the root and end in .h")
    elseif("${folder}" IN_LIST backend_folders AND "${header}" MATCHES "^zarn/[^/]+\\.h$")
    elseif(NOT "${target}" IN_LIST arrows_${folder})
        violation("${file}" "${line}" "this is no arrow of ${folder}/")
    endif()
endmacro()

macro(check_directive folder file line)
    if("${line}" MATCHES "^[ \t]*(#|%:)[ \t]*(if|ifdef|ifndef|elif)")
        violation("${file}" "${line}" "the core knows no platform")
    elseif("${line}" MATCHES "^[ \t]*(#|%:)[ \t]*(include|include_next|import)[ \t]*<([^>]*)>")
        set(header "${CMAKE_MATCH_3}")
        if("${file}" MATCHES "${json_source}" AND "${header}" MATCHES "^${json_library}")
        elseif("${file}" MATCHES "${options_source}" AND "${header}" MATCHES "${options_library}")
        elseif(NOT "${header}" IN_LIST standard_headers)
            violation("${file}" "${line}" "this is not a header of the standard library")
        endif()
    elseif("${line}" MATCHES "^[ \t]*(#|%:)[ \t]*include[ \t]*\"([^\"]*)\"")
        check_quoted("${folder}" "${file}" "${line}" "${CMAKE_MATCH_2}")
    elseif("${line}" MATCHES "include|import")
        violation("${file}" "${line}" "the name of a header stands in the line that includes it")
    endif()
endmacro()

foreach(folder IN LISTS core)
    # Only platform/ has folders of its own: the backends.
    if(folder STREQUAL "platform")
        file(GLOB files RELATIVE "${ROOT}" "${ROOT}/${folder}/*")
    else()
        file(GLOB_RECURSE files RELATIVE "${ROOT}" "${ROOT}/${folder}/*")
    endif()
    foreach(file IN LISTS files)
        if(IS_DIRECTORY "${ROOT}/${file}" OR file MATCHES "/CMakeLists\\.txt$")
            continue()
        endif()
        if(NOT file MATCHES "\\.(h|cpp)$")
            violation("${file}" "" "the core has .h and .cpp files only")
        endif()
        # A directive, or a module's import.
        file(STRINGS "${ROOT}/${file}" lines REGEX "^[ \t]*(#|%:|(export[ \t]+)?import[ \t<\"])")
        foreach(line IN LISTS lines)
            check_directive("${folder}" "${file}" "${line}")
        endforeach()
    endforeach()
endforeach()

foreach(folder IN LISTS backend_folders)
    file(GLOB files RELATIVE "${ROOT}" "${ROOT}/${folder}/*.h" "${ROOT}/${folder}/*.cpp")
    foreach(file IN LISTS files)
        file(STRINGS "${ROOT}/${file}" lines REGEX "^[ \t]*(#|%:)[ \t]*include[ \t]*\"[^\"]*/")
        foreach(line IN LISTS lines)
            string(REGEX REPLACE "^[^\"]*\"([^\"]*)\".*$" "\\1" header "${line}")
            check_quoted("${folder}" "${file}" "${line}" "${header}")
        endforeach()
    endforeach()
endforeach()

# That a header compiles on its own is proved by the source of its name, which includes it first.
foreach(folder IN LISTS core backend_folders)
    file(GLOB files RELATIVE "${ROOT}" "${ROOT}/${folder}/*.cpp")
    foreach(file IN LISTS files)
        string(REGEX REPLACE "[.]cpp$" ".h" header "${file}")
        file(STRINGS "${ROOT}/${file}" first LIMIT_COUNT 1 REGEX "^[ \t]*(#|%:)[ \t]*include")
        if(EXISTS "${ROOT}/${header}" AND NOT first STREQUAL "#include \"${header}\"")
            violation("${file}" "${first}" "the first include of a source is its own header")
        endif()
    endforeach()
endforeach()

# A file in a folder that the rule does not know would escape it.
file(GLOB files RELATIVE "${ROOT}" "${ROOT}/platform/*/*/*.h" "${ROOT}/platform/*/*/*.cpp")
foreach(file IN LISTS files)
    string(REGEX REPLACE "/[^/]*$" "" folder "${file}")
    if(NOT folder IN_LIST backend_folders AND NOT folder MATCHES "^platform/memory/")
        violation("${file}" "" "the rule has no arrows for this folder")
    endif()
endforeach()

foreach(folder IN ITEMS platform tests bench fuzz)
    file(GLOB_RECURSE files RELATIVE "${ROOT}" "${ROOT}/${folder}/*.h" "${ROOT}/${folder}/*.cpp")
    foreach(file IN LISTS files)
        file(STRINGS "${ROOT}/${file}" lines REGEX "^[ \t]*(#|%:)[ \t]*include[^a-z].*${json_library}")
        foreach(line IN LISTS lines)
            violation("${file}" "${line}" "only base/json.cpp includes the JSON library")
        endforeach()
    endforeach()
endforeach()

# Everything but a backend is the same program on every platform: tests, benchmarks and fuzzers too.
foreach(folder IN ITEMS tests bench fuzz)
    file(GLOB_RECURSE files RELATIVE "${ROOT}" "${ROOT}/${folder}/*.h" "${ROOT}/${folder}/*.cpp")
    foreach(file IN LISTS files)
        file(STRINGS "${ROOT}/${file}" lines
            REGEX "^[ \t]*(#|%:)[ \t]*(if|ifdef|ifndef|elif|elifdef|elifndef)[^a-z].*(${platform_macros})")
        foreach(line IN LISTS lines)
            violation("${file}" "${line}" "only a backend knows its platform")
        endforeach()
    endforeach()
endforeach()

if(violations)
    list(JOIN violations "\n" text)
    # As a notice, because an error's text is wrapped.
    message(NOTICE "The dependency rule is broken:\n${text}")
    message(FATAL_ERROR "These files may not include that.")
endif()
