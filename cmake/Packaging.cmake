# Debian packages of zenutl with `cpack -G DEB` in a build folder:
#   libzenutl0      the shared library
#   libzenutl-dev   headers, the CMake package and the pkg-config file
#   zenutl-tools    the zenutl command and the default audit trail stylesheet
# The packages install under /usr. The library's dependencies (Boost, Xerces-C, libuuid) come
# from dpkg-shlibdeps, so they name the Debian packages the binaries were really linked with;
# the development package names the -dev packages its headers and CMake package need.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zenutl)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "Utility library of the data-analysis applications: audit trail, configuration, streams")
set(CPACK_PACKAGE_CONTACT "zenutl maintainers <zenutl@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime dev tool)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# The tool links the library of the runtime package, not one of the system: its dependency on
# it comes from the component dependency below, with the exact version.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_COMPONENT_DEV_DEPENDS runtime)
set(CPACK_COMPONENT_TOOL_DEPENDS runtime)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzenutl${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The shared library.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libzenutl-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
  "libboost1.74-dev, libboost-thread1.74-dev, libboost-filesystem1.74-dev, libboost-system1.74-dev, libboost-date-time1.74-dev, libxerces-c-dev")
set(CPACK_COMPONENT_DEV_DESCRIPTION
  "Headers, the CMake package (find_package(zenutl)) and the pkg-config file.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME zenutl-tools)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_TOOL_DESCRIPTION
  "The zenutl command (audit trail checks, INI and XML settings, digests, stream containers) and the default audit trail stylesheet.")

include(CPack)
