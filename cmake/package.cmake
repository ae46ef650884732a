# The Debian package, made by scripts/package (or cpack -G DEB in the build folder).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "ncursesclient developers <developers@ncursesclient.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION hamradio)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"ncursesclient shows in a terminal what aircraft and their operators send each
other by ACARS: pick servers from a list, connect to as many as you like, and
every transmission is formatted, shown and, if you like, logged.
.
The services of the servers are one key away: updates of their databases,
daily mailings, pager lists and dated reports. A practice server, tovriksim,
is included, to try everything without a network.")
# Sets the permissions of control files whatever the umask is.
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/package_compress.cmake)
include(CPack)
