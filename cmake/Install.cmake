# SPDX-License-Identifier: Apache-2.0
# `cmake --install`: libraries, headers, and what find_package(tessel CONFIG) and `pkg-config tessel` read.
# Components: runtime, what a built program needs; record, what one that records needs besides; dev, what building one
# needs; tools, the `tessel` program.

include(CMakePackageConfigHelpers)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME dev)

install(CODE [[
  if(CMAKE_INSTALL_PREFIX MATCHES "[,:;]")
    message(FATAL_ERROR
      "libtessel cannot be installed in ${CMAKE_INSTALL_PREFIX}: the path contains '${CMAKE_MATCH_0}'")
  endif()]] ALL_COMPONENTS)

set(tessel_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tessel)
set(tessel_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set_target_properties(tessel PROPERTIES INSTALL_RPATH "$ORIGIN/tessel")
install(TARGETS tessel EXPORT tesselTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
set(tessel_record_run_path "$ORIGIN/tessel")
if(NOT TESSEL_PACKAGE)
  # A program may need this library alone. Where packages put libtessel.so, it is found anyway.
  list(PREPEND tessel_record_run_path "$ORIGIN")
endif()
set_target_properties(tessel_record PROPERTIES INSTALL_RPATH "${tessel_record_run_path}")
install(TARGETS tessel_record EXPORT tesselTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT record NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/tessel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TESSEL_UTIL_ROOT)
  set_target_properties(tessel tessel_record PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
  cmake_path(GET TESSEL_UTIL_LIBRARY PARENT_PATH tessel_util_pc_dir)
  cmake_path(GET TESSEL_UTIL_LIBRARY FILENAME tessel_util_pc_library)
  string(REPLACE " " "\\ " tessel_util_pc_dir "${tessel_util_pc_dir}")
  string(REPLACE " " "\\ " tessel_util_pc_cflags "-I${TESSEL_UTIL_INCLUDE_DIR}")
  set(tessel_util_pc_libs "-L${tessel_util_pc_dir} -l:${tessel_util_pc_library}")
else()
  install(TARGETS tessel_util EXPORT tesselTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/tessel COMPONENT runtime
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}/tessel)
  install(DIRECTORY libutil/include/util DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  if(TESSEL_SHARED)
    # Nobody else looks there; given like this, the run path outlives the installation of a program as well.
    target_link_options(tessel_util INTERFACE
      "$<INSTALL_INTERFACE:LINKER:-rpath,$<INSTALL_PREFIX>/${CMAKE_INSTALL_LIBDIR}/tessel>")
  endif()
  # By its folder and full name: the folder is not searched, so that -lutil stays the C library's.
  set(tessel_util_pc_dir "\${libdir}/tessel")
  set(tessel_util_pc_libs "-l:tessel/$<TARGET_FILE_NAME:tessel_util>")
  set(tessel_util_pc_cflags "")
endif()

install(EXPORT tesselTargets NAMESPACE tessel:: DESTINATION ${tessel_cmake_dir})
configure_package_config_file(cmake/tesselConfig.cmake.in ${PROJECT_BINARY_DIR}/tesselConfig.cmake
  INSTALL_DESTINATION ${tessel_cmake_dir} PATH_VARS CMAKE_INSTALL_BINDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tesselConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tesselConfig.cmake ${PROJECT_BINARY_DIR}/tesselConfigVersion.cmake
  cmake/TesselDeclare.cmake DESTINATION ${tessel_cmake_dir})

if(NOT TESSEL_PACKAGE)
  # Debian packages refer to the distribution's copy.
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tessel COMPONENT runtime)
endif()

if(TESSEL_PACKAGE)
  # Where only the runtime package is installed, this file's folder is missing, and no run path leads through it.
  string(REPLACE " " "\\ " tessel_pc_prefix "${CMAKE_INSTALL_PREFIX}")
else()
  # Relative to the file itself, so that an installed prefix can be moved.
  file(RELATIVE_PATH tessel_pc_prefix /${tessel_pkgconfig_dir} /)
  string(PREPEND tessel_pc_prefix "\${pcfiledir}/")
endif()
# What the static libraries need of the C++ runtime, for programs that another language's compiler links.
set(tessel_pc_private ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
list(FILTER tessel_pc_private INCLUDE REGEX "^(stdc\\+\\+|c\\+\\+|c\\+\\+abi|m)$")
list(REMOVE_DUPLICATES tessel_pc_private)
list(TRANSFORM tessel_pc_private PREPEND -l)
list(JOIN tessel_pc_private " " tessel_pc_private)
configure_file(cmake/tessel.pc.in ${PROJECT_BINARY_DIR}/tessel.pc.configured @ONLY)
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/tessel.pc INPUT ${PROJECT_BINARY_DIR}/tessel.pc.configured)
configure_file(cmake/tessel-record.pc.in ${PROJECT_BINARY_DIR}/tessel-record.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tessel.pc ${PROJECT_BINARY_DIR}/tessel-record.pc
  DESTINATION ${tessel_pkgconfig_dir})

# The printers of gdb. It looks for what belongs to a library below the library's full path, known when it is installed.
install(FILES gdb/tessel-gdb.py DESTINATION ${CMAKE_INSTALL_DATADIR}/tessel/gdb)
install(DIRECTORY gdb/tessel_gdb DESTINATION ${CMAKE_INSTALL_DATADIR}/tessel/gdb FILES_MATCHING PATTERN "*.py")
if(TESSEL_SHARED)
  install(CODE "file(REAL_PATH \"\${CMAKE_INSTALL_PREFIX}\" tessel_gdb_prefix)" ALL_COMPONENTS)
  set(tessel_gdb_dir "${CMAKE_INSTALL_DATADIR}/gdb/auto-load\${tessel_gdb_prefix}/${CMAKE_INSTALL_LIBDIR}")
  install(FILES gdb/tessel-gdb.py DESTINATION ${tessel_gdb_dir} RENAME $<TARGET_FILE_NAME:tessel>-gdb.py)
  if(NOT TESSEL_UTIL_ROOT)
    install(FILES gdb/tessel-gdb.py DESTINATION ${tessel_gdb_dir}/tessel RENAME $<TARGET_FILE_NAME:tessel_util>-gdb.py)
  endif()
endif()
