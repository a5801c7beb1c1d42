# SPDX-License-Identifier: Apache-2.0
# What every target of the project has in common.

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
  endif()
endif()

# Compile settings of the project's own targets; nothing here reaches a consumer.
function(tessel_configure target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    # Files of more than 2 GiB, and those whose number on the file system has more than 32 bits.
    target_compile_definitions(${target} PRIVATE _FILE_OFFSET_BITS=64)
  endif()
  if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "^(i[3-6]86|x86_64)$")
    # The older floating-point unit computes with more digits than the types have.
    target_compile_options(${target} PRIVATE -msse2 -mfpmath=sse)
  endif()
  if(PROJECT_IS_TOP_LEVEL)
    # Clang counts a change of sign as a -Wconversion, GCC does not: both ask for the same here.
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast
                           -Woverloaded-virtual -Wcast-qual -Wconversion -Wno-sign-conversion)
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
      # Which lock protects what: see tessel/locking.h.
      target_compile_options(${target} PRIVATE -Wthread-safety)
      # The standard library of GCC 12 deprecates what its own std::stable_sort() calls.
      target_compile_options(${target} PRIVATE -Wno-deprecated-declarations)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
      # GCC 12 sees overlaps in the standard library's own string code that are not there.
      target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
  endif()
  if(TESSEL_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${TESSEL_SANITIZE} -fno-sanitize-recover=all
                           -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${TESSEL_SANITIZE})
  endif()
endfunction()

# Settings of the shipped libraries alone: no symbol left undefined, and the platform's hardening.
function(tessel_configure_library target)
  tessel_configure(${target})
  # What a debugger and its printers read; packages split it off.
  target_compile_options(${target} PRIVATE $<$<AND:$<CONFIG:Release>,$<BOOL:${PROJECT_IS_TOP_LEVEL}>>:-g>)
  # Sanitizers, ours or those in the caller's flags, replace both.
  if(NOT TESSEL_SANITIZE AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    target_link_options(${target} PRIVATE LINKER:--no-undefined)
    target_compile_options(${target} PRIVATE -fstack-protector-strong
                           $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
    if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
      # The C library's old start-up functions, empty and unmarked, are left out: what runs at load is in arrays.
      target_compile_options(${target} PRIVATE -fcf-protection)
      target_link_options(${target} PRIVATE LINKER:-z,ibt,-z,shstk,-init=none,-fini=none)
    endif()
  endif()
  target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now,-z,noexecstack)
  # Never unloaded: threads, callbacks and objects with static storage use it when whoever loaded it has closed it.
  target_link_options(${target} PRIVATE LINKER:-z,nodelete)
  # All symbols are bound at load: a call needs no stub that could bind it later. Within a source file the compiler
  # may inline what is exported, too.
  target_compile_options(${target} PRIVATE -fno-plt -fno-semantic-interposition)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Distributions build with -O2, which inlines less and takes a fifth more instructions; with this, as -O3 does.
    target_compile_options(${target} PRIVATE -fipa-cp-clone --param=early-inlining-insns=14
      --param=inline-min-speedup=15 --param=max-inline-insns-auto=30 --param=max-inline-insns-single=200)
  endif()
endfunction()

# A shipped library NAME, made of the object library NAME_objects, which has the sources. Tests of private parts link
# the objects: the library hides those parts.
function(tessel_add_library name)
  add_library(${name}_objects OBJECT)
  tessel_configure_library(${name}_objects)
  set(type STATIC)
  if(TESSEL_SHARED)
    set(type SHARED)
  endif()
  add_library(${name} ${type} $<TARGET_OBJECTS:${name}_objects>)
  tessel_configure_library(${name})
endfunction()
