# The Debian packages: cpack --config BUILD_DIR/CPackConfig.cmake, or ./dev package. Which libraries they depend on is
# read from the binaries.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tintoral)
set(CPACK_PACKAGE_VENDOR "The Tintoral authors")
set(CPACK_PACKAGE_CONTACT "The Tintoral authors <authors@tintoral.example>")
set(CPACK_PACKAGE_HOMEPAGE_URL ${TINTORAL_PRODUCT_PAGE})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL core)
if(TINTORAL_WINDOW)
    list(APPEND CPACK_COMPONENTS_ALL window)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)

set(CPACK_DEBIAN_CORE_PACKAGE_NAME ${core_package})
set(CPACK_DEBIAN_CORE_PACKAGE_RECOMMENDS ${window_package})
set(CPACK_DEBIAN_CORE_PACKAGE_SUGGESTS cups)
set(CPACK_DEBIAN_CORE_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/core/postinst)
set(CPACK_DEBIAN_CORE_DESCRIPTION "ink and toner levels of printers - program and CUPS filter
Tintoral shows how much ink or toner is left in printers, and what state
they are in. It asks the printers themselves, on the network and over USB.

This package has the program without its window: a command filter for CUPS
(head cleaning, nozzle check, levels) that needs no graphical library, and
the rule that lets those who sit at the computer talk to its USB printers.")

set(CPACK_DEBIAN_WINDOW_PACKAGE_NAME ${window_package})
set(CPACK_DEBIAN_WINDOW_PACKAGE_DEPENDS "${core_package} (= ${PROJECT_VERSION}), hicolor-icon-theme")
set(CPACK_DEBIAN_WINDOW_PACKAGE_RECOMMENDS "avahi-daemon, libnss-mdns")
set(CPACK_DEBIAN_WINDOW_PACKAGE_SUGGESTS qt6-wayland)
set(CPACK_DEBIAN_WINDOW_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/window/postinst ${CMAKE_CURRENT_SOURCE_DIR}/window/postrm)
set(CPACK_DEBIAN_WINDOW_DESCRIPTION "ink and toner levels of printers - window
Tintoral shows how much ink or toner is left in printers, and what state
they are in. It asks the printers themselves, on the network and over USB.

This package has the window: a bar for each ink, the readings so far, and
head cleaning and nozzle check for the models that know them.")

include(CPack)
