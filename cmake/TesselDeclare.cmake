# SPDX-License-Identifier: Apache-2.0
# tessel_declare_settings(TARGET FILE...): the settings that the files declare, for the target to use. The header
# <TARGET_settings.h> is made at build time, and again when a file changes; the target, and what links it, may include
# it. Called once for a target, where that is made. TESSEL_PROGRAM names another program than the package's own: one
# that runs on the machine that builds, when that is not the one built for.
function(tessel_declare_settings target)
  if(NOT TARGET "${target}")
    message(FATAL_ERROR "tessel_declare_settings: there is no target \"${target}\"")
  endif()
  if(NOT ARGN)
    message(FATAL_ERROR "tessel_declare_settings(${target}): no file of declarations is given")
  endif()
  get_target_property(folder ${target} SOURCE_DIR)
  if(NOT folder STREQUAL CMAKE_CURRENT_SOURCE_DIR)
    message(FATAL_ERROR "tessel_declare_settings(${target}): the target is made in another folder, ${folder}")
  endif()
  get_target_property(isDeclared ${target} TESSEL_DECLARES_SETTINGS)
  if(isDeclared)
    message(FATAL_ERROR "tessel_declare_settings(${target}): called twice; it takes all files at once")
  endif()
  set_target_properties(${target} PROPERTIES TESSEL_DECLARES_SETTINGS ON)

  if(TESSEL_PROGRAM)
    set(program "${TESSEL_PROGRAM}")
  elseif(TARGET tessel::program)
    set(program $<TARGET_FILE:tessel::program>)
  else()
    message(FATAL_ERROR "tessel_declare_settings(${target}): the program tessel is missing. It is installed with the "
                        "tools, and built with TESSEL_BUILD_TOOLS=ON; TESSEL_PROGRAM can name another one.")
  endif()

  set(files)
  foreach(file IN LISTS ARGN)
    cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" NORMALIZE)
    list(APPEND files "${file}")
  endforeach()
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/${target}_declared")
  set(header "${folder}/${target}_settings.h")
  file(MAKE_DIRECTORY "${folder}")
  add_custom_command(OUTPUT "${header}"
    COMMAND "${program}" declare ${files} --header --output "${header}"
    DEPENDS ${files} "${program}"
    COMMENT "Making ${target}_settings.h of what is declared" VERBATIM)

  get_target_property(type ${target} TYPE)
  set(scope PUBLIC)
  if(type STREQUAL "INTERFACE_LIBRARY")
    set(scope INTERFACE)
    add_custom_target(${target}_settings DEPENDS "${header}")
    add_dependencies(${target} ${target}_settings)
  else()
    target_sources(${target} PRIVATE "${header}")
  endif()
  target_include_directories(${target} ${scope} "$<BUILD_INTERFACE:${folder}>")
endfunction()
