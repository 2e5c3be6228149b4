# Debian packages of the three parts of an installation: libqmx0 (named by the libraries' binary interface), libqmx-dev
# and qmx. scripts/package makes them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qmx)
set(CPACK_PACKAGE_VENDOR "The QMX engine authors")
# Who makes packages for others states a name and an address, as Debian's tools have them.
if(NOT "$ENV{DEBEMAIL}" STREQUAL "")
  set(CPACK_PACKAGE_CONTACT "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
else()
  set(CPACK_PACKAGE_CONTACT "The QMX engine authors <qmx@localhost>")
endif()
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # every package has its own, the first line of its description
# What a package needs beyond the installation: copyright, changes, compressed pages.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianFiles.cmake)
set(CPACK_QMX_SOURCE_DIR ${PROJECT_SOURCE_DIR})

set(CPACK_COMPONENTS_ALL runtime development program)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Libraries of one package that another one's programs need; what depends on which is stated below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_PROGRAM_DEPENDS runtime)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libqmx${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "editing and rendering engine of a screen-capture editor - libraries
The engine keeps a project (documents, tracks, clips) and answers with the
picture of any clip at any time.

This package contains the libraries that hosts load, and a module of
transition effects.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqmx-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS qmx)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "editing and rendering engine of a screen-capture editor - development
The engine keeps a project (documents, tracks, clips) and answers with the
picture of any clip at any time.

This package contains the headers, a CMake package and a pkg-config file. The
package qmx brings a guide and samples.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME qmx)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "editing and rendering engine of a screen-capture editor - program
The engine keeps a project (documents, tracks, clips) and answers with the
picture of any clip at any time.

This package contains qmx, a program that renders projects, shows single
pictures of them and tells about media files, and the documents and samples.")
include(CPack)

if(QMX_BUILD_TESTS AND QMX_BUILD_HOST AND NOT QMX_SANITIZE)
  add_test(NAME Packages.HoldWhatTheirNamesSay
    COMMAND ${PROJECT_SOURCE_DIR}/tests/consumer/check-packages ${PROJECT_BINARY_DIR} ${PROJECT_VERSION})
  set_tests_properties(Packages.HoldWhatTheirNamesSay PROPERTIES LABELS install TIMEOUT 300 SKIP_RETURN_CODE 77)
endif()
