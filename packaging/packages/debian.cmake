# The .deb packages. They have no Debian revision, because they are made from the program's own tree.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_VERSION ${TANDREL_VERSION}+${release})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${${component}_package})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${${component}_summary}\n${${component}_description}")
endforeach()

set(CPACK_DEBIAN_LAUNCHER_PACKAGE_DEPENDS curl)
set(CPACK_DEBIAN_LAUNCHER_PACKAGE_RECOMMENDS "tandrel-suite | tandrel-standins")
set(CPACK_DEBIAN_LAUNCHER_PACKAGE_SUGGESTS "tandrel-gui, xdg-utils")
set(CPACK_DEBIAN_LAUNCHER_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/debian/prerm)
set(CPACK_DEBIAN_INTERFACE_PACKAGE_DEPENDS "tandrel (= ${CPACK_DEBIAN_PACKAGE_VERSION})")
set(CPACK_DEBIAN_INTERFACE_PACKAGE_RECOMMENDS
  "qt6-gtk-platformtheme, qt6-wayland, xdg-utils, zenity | kdialog | x11-utils")
set(CPACK_DEBIAN_SUITE_PACKAGE_DEPENDS tandrel)
set(CPACK_DEBIAN_SUITE_PACKAGE_CONFLICTS tandrel-standins)
set(CPACK_DEBIAN_SUITE_PACKAGE_REPLACES tandrel-standins)
set(CPACK_DEBIAN_STANDINS_PACKAGE_DEPENDS tandrel)
set(CPACK_DEBIAN_STANDINS_PACKAGE_CONFLICTS tandrel-suite)

# For arrange.cmake.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(debian/changelog.in debian/changelog @ONLY)
set(CPACK_TANDREL_CHANGELOG ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog)
set(CPACK_TANDREL_OVERRIDES ${CMAKE_CURRENT_SOURCE_DIR}/debian/overrides)
set(CPACK_TANDREL_COPYRIGHT ${PROJECT_SOURCE_DIR}/packaging/copyright)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/debian/arrange.cmake)
