# The publisher's own texts and addresses. A packager sets them on the command line.
include_guard(GLOBAL)

set(ZARN_BUILD_NUMBER "1" CACHE STRING "Build number (CFBundleVersion)")
set(ZARN_SHORT_VERSION "${PROJECT_VERSION}" CACHE STRING
    "Marketing version, M.m.p or M.m.pbN (CFBundleShortVersionString)")
set(ZARN_UPDATE_CHECK_PAGE_URL "https://zarn-actions.example/releases" CACHE STRING
    "https address of the page that lists the published version")
set(ZARN_FEEDBACK_ADDRESS "zarn-actions.example/feedback" CACHE STRING
    "Feedback address, without scheme")
set(ZARN_AGREEMENT_TITLE "Zarn Actions Software Licence Agreement" CACHE STRING
    "Title of the licence agreement")
set(ZARN_AGREEMENT_URL "https://zarn-actions.example/licence-agreement.pdf" CACHE STRING
    "Address of the licence agreement document")
set(ZARN_PUBLISHER_NAME "Zarnie Software" CACHE STRING "Publisher's name in the ownership notice")
set(ZARN_RELEASE_DATE "2026-11-21" CACHE STRING "Date of this version, for software catalogues")
