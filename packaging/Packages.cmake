# "cpack" makes the Debian packages. scripts/package builds them as they are released.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ordovan)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has one of its own
set(CPACK_PACKAGE_VENDOR "The ordovan+ authors")
set(CPACK_PACKAGE_CONTACT "The ordovan+ authors <authors@ordovan.example>")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
    WORLD_EXECUTE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL engine)
if(ORDOVAN_FRONT_ENDS)
  list(APPEND CPACK_COMPONENTS_ALL cli desktop)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${ORDOVAN_PACKAGE_REVISION})
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${ORDOVAN_HOMEPAGE})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_DESKTOP_PACKAGE_NAME ordovan)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_SHLIBDEPS ON)
# The desktop action that previews Downloads asks xdg-user-dir where that folder is.
set(CPACK_DEBIAN_DESKTOP_PACKAGE_DEPENDS "hicolor-icon-theme, libssl3, xdg-user-dirs")
set(CPACK_DEBIAN_DESKTOP_PACKAGE_RECOMMENDS "qt6-translations-l10n, qt6-wayland")
set(CPACK_DEBIAN_DESKTOP_PACKAGE_SUGGESTS ordovan-cli)
set(CPACK_COMPONENT_DESKTOP_DESCRIPTION
"careful folder organizing, with a preview and undo
ordovan+ shows for every file of one folder where it would go, by its type or
by your own rules, and moves nothing until you have seen the plan and said yes.
Nothing is ever overwritten or deleted, and what was done can be undone.

It also finds exact copies and large files, moves them to the Trash, and puts
them back. This is the window; the package ordovan-cli has the command line.")

set(CPACK_DEBIAN_CLI_PACKAGE_NAME ordovan-cli)
set(CPACK_DEBIAN_CLI_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_CLI_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_CLI_PACKAGE_DEPENDS "libssl3")
set(CPACK_DEBIAN_CLI_PACKAGE_SUGGESTS "libnotify-bin, ordovan")
set(CPACK_COMPONENT_CLI_DESCRIPTION
"careful folder organizing, on the command line
ordovan-cli shows for every file of one folder where it would go, by its type
or by your own rules, and moves the files once you have agreed. Nothing is ever
overwritten or deleted, and what was done can be undone.

It needs no display, prints JSON where that is asked for, and keeps its records
together with the window of the package ordovan.")

set(CPACK_DEBIAN_ENGINE_PACKAGE_NAME libordovancore-dev)
set(CPACK_DEBIAN_ENGINE_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_ENGINE_PACKAGE_DEPENDS "libboost-json1.81-dev, libicu-dev (>= 72), libssl3")
set(CPACK_COMPONENT_ENGINE_DESCRIPTION
"careful folder organizing (static library)
The engine of ordovan+ for other programs: it scans a folder, plans where each
file would go, moves files without ever overwriting one, and undoes that.

This package has the headers, the static library, a CMake package and an
example. It needs a compiler for C++23.")
include(CPack)
