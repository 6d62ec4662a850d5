# The Debian packages that "cpack -G DEB" makes of the installed components; scripts/package does
# it all. An own file, because CPack is set up last and at the top.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velmora)
set(CPACK_PACKAGE_VENDOR "The Velmora developers")
set(CPACK_PACKAGE_CONTACT "Velmora developers <velmora@example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_COMPONENTS_ALL doc)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

if(VELMORA_DESKTOP)
  list(APPEND CPACK_COMPONENTS_ALL desktop)
endif()
set(CPACK_DEBIAN_DESKTOP_PACKAGE_NAME velmora)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_SECTION net)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_SHLIBDEPS ON)
# Loaded by name, so not found by ldd.
set(CPACK_DEBIAN_DESKTOP_PACKAGE_DEPENDS "qt6-qpa-plugins, libsystemd0")
set(CPACK_DEBIAN_DESKTOP_PACKAGE_SUGGESTS "avahi-daemon")
set(CPACK_DEBIAN_DESKTOP_PACKAGE_RECOMMENDS "velmora-daemon, velmora-doc")
set(CPACK_DEBIAN_DESKTOP_DESCRIPTION
"servent for the Gnutella 0.4 peer-to-peer network
Velmora is client and server in one: it keeps message connections to other
servents, relays and answers their descriptors, shares the files of the
folders that you name, searches, and downloads with resumption.

This package has the program with a window and an icon in the notification
area.")

if(VELMORA_DAEMON)
  list(APPEND CPACK_COMPONENTS_ALL daemon)
endif()
set(CPACK_DEBIAN_DAEMON_PACKAGE_NAME velmora-daemon)
set(CPACK_DEBIAN_DAEMON_PACKAGE_SECTION net)
set(CPACK_DEBIAN_DAEMON_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DAEMON_PACKAGE_DEPENDS "libsystemd0")  # loaded by name, so not found by ldd
set(CPACK_DEBIAN_DAEMON_PACKAGE_RECOMMENDS "velmora-doc")
set(CPACK_DEBIAN_DAEMON_PACKAGE_SUGGESTS "avahi-daemon")
set(CPACK_DEBIAN_DAEMON_DESCRIPTION
"Gnutella 0.4 servent without a screen, and its command
Velmora is client and server in one: it keeps message connections to other
servents, relays and answers their descriptors, shares the files of the
folders that you name, searches, and downloads with resumption.

This package has velmorad, which needs no screen and can be run as a systemd
user service, and velmora-cli, the command that drives it or the program with
the window.")

set(CPACK_DEBIAN_DOC_PACKAGE_NAME velmora-doc)
set(CPACK_DEBIAN_DOC_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOC_DESCRIPTION
"documents of the Velmora servent
Velmora is client and server in one for the Gnutella 0.4 peer-to-peer
network.

This package has its documents, and the manual pages velmora-settings(5) and
velmora-files(5).")

include(CPack)
