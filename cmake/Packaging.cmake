# `cpack -G DEB` in a build tree makes a Debian package of the library, its
# headers and CMake/pkg-config files, and the qal tool with its default
# configuration. Its dependencies are Debian package names, worked out by
# dpkg-shlibdeps from the libraries the binaries really link.
set(CPACK_PACKAGE_NAME qalpack)
set(CPACK_PACKAGE_VENDOR "qalpack developers")
set(CPACK_PACKAGE_CONTACT "qalpack developers <qalpack@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "")
include(CPack)
