# SPDX-License-Identifier: Apache-2.0
# The fuzz targets and the sources of each: <name>_fuzz.cpp and the models that it compares with. Used by the fuzz
# build, and by the tests, which replay kept inputs with every compiler.

set(TESSEL_FUZZ_TARGETS json settings typed_reader statistics store)

set(tessel_fuzz_folder ${CMAKE_CURRENT_LIST_DIR})
set(tessel_fuzz_json_models JsonModel.cpp)
set(tessel_fuzz_settings_models SettingsModel.cpp TraceCheck.cpp)
set(tessel_fuzz_typed_reader_models JsonModel.cpp)
set(tessel_fuzz_statistics_models AudioModel.cpp VideoModel.cpp TraceCheck.cpp)
set(tessel_fuzz_store_models FacadeModel.cpp SettingsModel.cpp StoreModel.cpp TraceCheck.cpp)

# tessel_fuzz_sources(target name): adds what the fuzz target `name` is made of.
function(tessel_fuzz_sources target name)
  list(TRANSFORM tessel_fuzz_${name}_models PREPEND ${tessel_fuzz_folder}/ OUTPUT_VARIABLE models)
  target_sources(${target} PRIVATE ${tessel_fuzz_folder}/${name}_fuzz.cpp ${models})
  target_include_directories(${target} PRIVATE ${tessel_fuzz_folder})
endfunction()
