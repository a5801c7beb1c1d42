# SPDX-License-Identifier: Apache-2.0
# The fuzz targets, each of <name>_fuzz.cpp and the models that it compares with. Used by the fuzz build, and by the
# tests, which replay kept inputs with every compiler.

set(TESSEL_FUZZ_TARGETS json settings typed_reader statistics store recording)

set(tessel_fuzz_folder ${CMAKE_CURRENT_LIST_DIR})
if(NOT TARGET tessel_fuzz_models)
  set(models AudioModel.cpp FacadeModel.cpp JsonModel.cpp SettingsModel.cpp StoreModel.cpp TraceCheck.cpp
      VideoModel.cpp)
  list(TRANSFORM models PREPEND ${tessel_fuzz_folder}/)
  add_library(tessel_fuzz_models STATIC ${models})
  tessel_configure(tessel_fuzz_models)
  target_include_directories(tessel_fuzz_models PUBLIC ${tessel_fuzz_folder})
  target_link_libraries(tessel_fuzz_models PUBLIC tessel::tessel)
endif()

# tessel_fuzz_sources(target name): adds what the fuzz target `name` is made of.
function(tessel_fuzz_sources target name)
  target_sources(${target} PRIVATE ${tessel_fuzz_folder}/${name}_fuzz.cpp)
  target_link_libraries(${target} PRIVATE tessel_fuzz_models)
  if(name STREQUAL recording)
    set(tools ${tessel_fuzz_folder}/../tools)
    target_sources(${target} PRIVATE ${tools}/recording/RecordingEvent.cpp ${tools}/recording/RecordingReader.cpp)
    target_include_directories(${target} PRIVATE ${tools})
  endif()
endfunction()
