# Run by CPack on the installed trees, before it makes packages of them: adds what Debian's policy wants.
cmake_minimum_required(VERSION 3.25)

find_program(gzip gzip REQUIRED)
find_program(date date REQUIRED)
set(source "${CMAKE_CURRENT_LIST_DIR}/../..")

function(zarn_compress file)
    execute_process(COMMAND "${gzip}" -9nf "${file}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Debian's form of CHANGELOG.md: the versions and their dates. What changed stands in the other.
function(zarn_debian_changelog result)
    file(STRINGS "${source}/CHANGELOG.md" releases REGEX "^## \\[[0-9]")
    set(text "")
    foreach(release IN LISTS releases)
        string(REGEX MATCH "([0-9][^]]*). - ([0-9-]+)" unused "${release}")
        string(REGEX REPLACE "b([0-9]+)$" "~b\\1" version "${CMAKE_MATCH_1}")
        execute_process(COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C "${date}" -u -d "${CMAKE_MATCH_2}" "+%a, %d %b %Y %T %z"
            OUTPUT_VARIABLE day OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        string(APPEND text "zarn-actions (${version}-1) stable; urgency=medium\n\n"
            "  * Version ${version}; see changelog.gz for what it brings.\n\n"
            " -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${day}\n\n")
    endforeach()
    file(WRITE "${result}" "${text}")
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER "${component}" name)
    set(package "${CPACK_DEBIAN_${name}_PACKAGE_NAME}")
    set(root "${CPACK_TEMPORARY_DIRECTORY}/${component}/usr")
    set(doc "${root}/share/doc/${package}")
    file(GLOB pages "${root}/share/man/man1/*.1")
    foreach(page IN LISTS pages)
        zarn_compress("${page}")
    endforeach()
    configure_file("${CPACK_ZARN_COPYRIGHT}" "${doc}/copyright" COPYONLY)
    configure_file("${source}/CHANGELOG.md" "${doc}/changelog" COPYONLY)
    zarn_compress("${doc}/changelog")
    zarn_debian_changelog("${doc}/changelog.Debian")
    zarn_compress("${doc}/changelog.Debian")
    configure_file("${CMAKE_CURRENT_LIST_DIR}/lintian-overrides"
        "${root}/share/lintian/overrides/${package}" COPYONLY)
endforeach()
