# The publisher's own texts and addresses. A packager sets them on the command line.
include_guard(GLOBAL)

set(ZARN_BUILD_NUMBER "1" CACHE STRING "Build number (CFBundleVersion)")
set(ZARN_SHORT_VERSION "${PROJECT_VERSION}" CACHE STRING
    "Marketing version, M.m.p or M.m.pbN (CFBundleShortVersionString)")
set(ZARN_UPDATE_CHECK_PAGE_URL "https://zarn-actions.example/releases" CACHE STRING
    "https address of the page that lists the published version")
set(ZARN_SCREENSHOTS_URL "https://zarn-actions.example/pictures" CACHE STRING
    "https address of the folder that has docs/pictures, for software catalogues")
set(ZARN_FEEDBACK_ADDRESS "zarn-actions.example/feedback" CACHE STRING
    "Feedback address, without scheme")
set(ZARN_AGREEMENT_TITLE "Zarn Actions Software Licence Agreement" CACHE STRING
    "Title of the licence agreement")
set(ZARN_AGREEMENT_URL "https://zarn-actions.example/licence-agreement.pdf" CACHE STRING
    "Address of the licence agreement document")
set(ZARN_PUBLISHER_NAME "Zarnie Software" CACHE STRING "Publisher's name in the ownership notice")
set(ZARN_MAINTAINER "Zarnie Software <packages@zarn-actions.example>" CACHE STRING
    "Who answers for the Debian packages: name and mail address")

# The date of this version, for software catalogues and manual pages.
set(zarn_changelog "${PROJECT_SOURCE_DIR}/CHANGELOG.md")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${zarn_changelog}")
string(REPLACE "." "[.]" zarn_version_pattern "${PROJECT_VERSION}")
file(STRINGS "${zarn_changelog}" zarn_releases REGEX "^## \\[[0-9]")
list(POP_FRONT zarn_releases zarn_release)
if(NOT zarn_release MATCHES "^## .${zarn_version_pattern}. - ([0-9]+-[0-9][0-9]-[0-9][0-9])$")
    message(FATAL_ERROR "The newest version in CHANGELOG.md is not ${PROJECT_VERSION} with its date")
endif()
set(ZARN_RELEASE_DATE "${CMAKE_MATCH_1}")
