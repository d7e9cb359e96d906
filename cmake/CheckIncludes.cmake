# SPDX-License-Identifier: MIT
# cmake -D ROOT=<folder> -P CheckIncludes.cmake
# The dependency rule: the core includes the standard library, platform/*.h and what its arrows allow.
# The compiler alone would not notice: some third-party headers are reachable without being asked for.
cmake_minimum_required(VERSION 3.25)

set(arrows_app app profiles api update log)
set(arrows_profiles profiles api log)
set(arrows_api api log)
set(arrows_update update)
set(arrows_log log)
set(arrows_platform)

# A standard header has no dot and no slash in its name. POSIX and C headers all end in ".h".
set(standard_header "^[a-z_0-9]+$")
# The process entry is the one place that names a backend and reads what the build generated.
set(process_entry "^app/main\\.cpp$")

set(violations)
foreach(folder IN ITEMS app profiles api update log platform)
    file(GLOB files RELATIVE "${ROOT}" "${ROOT}/${folder}/*.h" "${ROOT}/${folder}/*.cpp")
    foreach(file IN LISTS files)
        file(STRINGS "${ROOT}/${file}" lines REGEX "^[ \t]*#")
        foreach(line IN LISTS lines)
            if(line MATCHES "^[ \t]*#[ \t]*(if|ifdef|ifndef|elif)")
                list(APPEND violations "${file}: ${line}: the core knows no platform")
            elseif(line MATCHES "#[ \t]*include[ \t]*<([^>]*)>")
                if(NOT CMAKE_MATCH_1 MATCHES "${standard_header}")
                    list(APPEND violations "${file}: <${CMAKE_MATCH_1}> is not the standard library's")
                endif()
            elseif(line MATCHES "#[ \t]*include[ \t]*\"([^\"]*)\"")
                set(header "${CMAKE_MATCH_1}")
                if(header MATCHES "^platform/[^/]+\\.h$")
                    continue()
                endif()
                if(file MATCHES "${process_entry}" AND header MATCHES "^(platform/linux|zarn)/")
                    continue()
                endif()
                string(REGEX REPLACE "/.*" "" target "${header}")
                if(NOT target IN_LIST arrows_${folder})
                    list(APPEND violations "${file}: \"${header}\" is no arrow of ${folder}/")
                endif()
            endif()
        endforeach()
    endforeach()
endforeach()

if(violations)
    list(JOIN violations "\n" text)
    message(FATAL_ERROR "The dependency rule is broken:\n${text}")
endif()
