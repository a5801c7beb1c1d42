# SPDX-License-Identifier: Apache-2.0
# tessel::util from an engine's own prefix: <prefix>/include/util/util.h and libutil.so.

find_path(TESSEL_UTIL_INCLUDE_DIR util/util.h PATHS "${TESSEL_UTIL_ROOT}" PATH_SUFFIXES include
          NO_DEFAULT_PATH REQUIRED)
find_library(TESSEL_UTIL_LIBRARY NAMES libutil.so PATHS "${TESSEL_UTIL_ROOT}"
             PATH_SUFFIXES ${CMAKE_INSTALL_LIBDIR} ${CMAKE_INSTALL_LIBDIR}/tessel lib lib/tessel lib64
             NO_DEFAULT_PATH REQUIRED)

add_library(tessel::util SHARED IMPORTED)
set_target_properties(tessel::util PROPERTIES
  IMPORTED_LOCATION "${TESSEL_UTIL_LIBRARY}"
  INTERFACE_INCLUDE_DIRECTORIES "${TESSEL_UTIL_INCLUDE_DIR}")
