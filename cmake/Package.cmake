# SPDX-License-Identifier: Apache-2.0
# `cpack`: a Debian package for each component of the installation, and one with the debug symbols.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
# The prefix stays what it will be on the user's machine: some files say it.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# The contact is the tracker, the packages' home page. Debian asks for a maintainer with a mail address, too: whoever
# publishes packages is named; until then nobody reads the address.
set(TESSEL_TRACKER "" CACHE STRING "Address of the project's tracker, which packages name as their home page")
set(TESSEL_PACKAGER "" CACHE STRING "Who publishes the packages, as NAME <ADDRESS>")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${TESSEL_TRACKER}")
set(CPACK_PACKAGE_CONTACT "${TESSEL_PACKAGER}")
if(NOT CPACK_PACKAGE_CONTACT)
  set(CPACK_PACKAGE_CONTACT "The libtessel authors <maintainers@libtessel.invalid>")
endif()
# Each package has its own summary; this one would come first.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE libtessel)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib ${PROJECT_BINARY_DIR}/lib/tessel)
set(CPACK_STRIP_FILES ON)

execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/cmake/debian/changelog
  OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)

# tessel_package(COMPONENT NAME SECTION DESCRIPTION [DEPENDS]): the first line of the description is its summary.
macro(tessel_package component name section description)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${key}_DESCRIPTION ${description})
  set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${ARGN}")
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/copyright ${PROJECT_BINARY_DIR}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${name} COMPONENT ${component})
endmacro()

set(tessel_runtime_package libtessel${PROJECT_VERSION_MAJOR})
tessel_package(runtime ${tessel_runtime_package} libs
"shared settings and statistics for a media engine
The components of a real-time audio and video engine share one process, and
one call's state. libtessel holds that state: settings in groups, with
subscriptions to their changes, feature toggles, statistics records, and
JSON in and out.
.
This package contains the shared libraries.")
set(tessel_record_package libtessel-record${PROJECT_VERSION_MAJOR})
tessel_package(record ${tessel_record_package} libs
"shared settings and statistics for a media engine - recordings
libtessel holds the settings and the statistics of the calls of a real-time
audio and video engine.
.
This package contains the shared library that writes recordings: files of
what happens to them, which the program tessel reads."
"${tessel_runtime_package} (= ${PROJECT_VERSION})")
tessel_package(dev libtessel-dev libdevel
"shared settings and statistics for a media engine - development files
libtessel holds the settings and the statistics of the calls of a real-time
audio and video engine.
.
This package contains the headers, and what CMake and pkg-config need to
know to build programs against the libraries."
"${tessel_runtime_package} (= ${PROJECT_VERSION}), ${tessel_record_package} (= ${PROJECT_VERSION})")
# tessel_declare_settings() runs the program.
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS "tessel-tools (= ${PROJECT_VERSION})")
tessel_package(tools tessel-tools utils
"shared settings and statistics for a media engine - command-line program
libtessel holds the settings and the statistics of the calls of a real-time
audio and video engine.
.
This package contains the program tessel, which works on settings documents,
feature toggles, statistics blocks and recordings."
"${tessel_runtime_package} (= ${PROJECT_VERSION}), ${tessel_record_package} (= ${PROJECT_VERSION})")

tessel_package(debug ${tessel_runtime_package}-dbg debug
"shared settings and statistics for a media engine - debug symbols
libtessel holds the settings and the statistics of the calls of a real-time
audio and video engine.
.
This package contains what a debugger needs to know about the libraries and
the program tessel; it finds that by itself."
"${tessel_runtime_package} (= ${PROJECT_VERSION})")
install(CODE "set(files $<TARGET_FILE:tessel> $<TARGET_FILE:tessel_util> $<TARGET_FILE:tessel_record>
    $<TARGET_FILE:tessel_cli>)
  set(readelf ${CMAKE_READELF})
  set(objcopy ${CMAKE_OBJCOPY})" COMPONENT debug)
install(SCRIPT cmake/debian/InstallDebugSymbols.cmake COMPONENT debug)

# Manual pages are compressed.
install(CODE "file(GLOB pages \$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/man*/*)
  if(pages)
    execute_process(COMMAND gzip -9n \${pages} COMMAND_ERROR_IS_FATAL ANY)
  endif()" COMPONENT tools)

# What programs built against the library depend on, and the linker's cache.
file(WRITE ${PROJECT_BINARY_DIR}/shlibs
  "libtessel ${PROJECT_VERSION_MAJOR} ${tessel_runtime_package} (>= ${PROJECT_VERSION})\n")
file(WRITE ${PROJECT_BINARY_DIR}/record/shlibs
  "libtessel_record ${PROJECT_VERSION_MAJOR} ${tessel_record_package} (>= ${PROJECT_VERSION})\n")
file(WRITE ${PROJECT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/shlibs ${PROJECT_BINARY_DIR}/triggers)
set(CPACK_DEBIAN_RECORD_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/record/shlibs ${PROJECT_BINARY_DIR}/triggers)

include(CPack)
