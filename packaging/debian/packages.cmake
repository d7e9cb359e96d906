# The Debian packages, made by CPack of what is already built: one for each component of the installation.
# "1.2b3" comes before "1.2".
string(REGEX REPLACE "b([0-9]+)$" "~b\\1" zarn_debian_version "${ZARN_SHORT_VERSION}")
# The licence's conditions, indented as a field of many lines.
file(READ "${PROJECT_SOURCE_DIR}/LICENSE" zarn_licence)
string(REGEX REPLACE "^.*\n(Copyright [^\n]*)\n\n" "" zarn_licence "${zarn_licence}")
string(REGEX REPLACE "^Copyright [^0-9]*" "" zarn_copyright "${CMAKE_MATCH_1}")
string(STRIP "${zarn_licence}" zarn_licence)
string(REPLACE "\n\n" "\n.\n" zarn_licence "${zarn_licence}")
string(REPLACE "\n" "\n " zarn_licence " ${zarn_licence}")
configure_file(debian/copyright.in "${PROJECT_BINARY_DIR}/generated/debian/copyright" @ONLY)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zarn-actions)
set(CPACK_PACKAGE_VENDOR "${ZARN_PUBLISHER_NAME}")
set(CPACK_PACKAGE_VERSION "${ZARN_SHORT_VERSION}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL window tools)
set(CPACK_ZARN_COPYRIGHT "${PROJECT_BINARY_DIR}/generated/debian/copyright")
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/complete_tree.cmake")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION "${zarn_debian_version}")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${ZARN_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${ZARN_UPDATE_CHECK_PAGE_URL}")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What is linked says what is needed.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEBIAN_WINDOW_PACKAGE_NAME zarn-actions)
set(CPACK_DEBIAN_WINDOW_PACKAGE_SECTION admin)
# The modules that the window loads are in the other package, and both are built together.
set(CPACK_DEBIAN_WINDOW_PACKAGE_DEPENDS "zarn-actions-tools (= ${zarn_debian_version}-1), ca-certificates")
string(CONCAT CPACK_DEBIAN_WINDOW_PACKAGE_RECOMMENDS
    "qt6-wayland, gnome-keyring | libkf5wallet-bin | keepassxc, "
    "xdg-desktop-portal-gtk | xdg-desktop-portal-backend, xdg-utils")
set(CPACK_COMPONENT_WINDOW_DESCRIPTION
"register Zarn Pro servers for automation actions
Zarn Actions is for people who administer Zarn Pro device-management servers.
Register a server once: its address, a name, and either a username and
password or an API client id and secret.
.
The program proves the credentials against the server and leaves the result
where automation actions find it: the profile in shared settings, the secrets
in the keyring of the desktop.
.
This package has the window.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME zarn-actions-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS ca-certificates)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "zarn-actions, gnome-keyring")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
"register Zarn Pro servers from a shell, and use them
zarn-profile registers servers, checks them and gives automation actions
access tokens, as the window of Zarn Actions does. zarn-defaults reads and
writes the settings of Zarn Actions, zarn-keychain reads its keychain items,
from the keyring service of the desktop or from the encrypted file that stands
in for it.
.
None needs a display or the toolkit of the window.")
include(CPack)
