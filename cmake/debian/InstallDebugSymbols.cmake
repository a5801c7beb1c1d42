# SPDX-License-Identifier: Apache-2.0
# Puts the debug symbols of `files` where debuggers look for them, under each file's build id.
foreach(file IN LISTS files)
  execute_process(COMMAND ${readelf} -n ${file} OUTPUT_VARIABLE notes COMMAND_ERROR_IS_FATAL ANY)
  if(NOT notes MATCHES "Build ID: ([0-9a-f][0-9a-f])([0-9a-f]+)")
    message(FATAL_ERROR "no build id: ${file}")
  endif()
  set(symbols $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/lib/debug/.build-id/${CMAKE_MATCH_1}/${CMAKE_MATCH_2}.debug)
  get_filename_component(folder ${symbols} DIRECTORY)
  file(MAKE_DIRECTORY ${folder})
  execute_process(COMMAND ${objcopy} --only-keep-debug --compress-debug-sections ${file} ${symbols}
    COMMAND_ERROR_IS_FATAL ANY)
  file(CHMOD ${symbols} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endforeach()
