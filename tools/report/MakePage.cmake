# SPDX-License-Identifier: Apache-2.0
# Makes the C++ source of the page: cmake -D WEB=folder -D DYGRAPHS=folder -D OUT=file -P MakePage.cmake
# The modules of WEB become one script, and the policy of the page names that script and the others by their hashes.
# Without DYGRAPHS the page is empty.
cmake_minimum_required(VERSION 3.25)

# add_module(NAME): appends to `script` the module and, before it, those it imports. Each is a function, so that their
# private names stay apart; the last one, main, may wait.
function(add_module name)
  get_property(added GLOBAL PROPERTY added_modules)
  if(name IN_LIST added)
    return()
  endif()
  set_property(GLOBAL APPEND PROPERTY added_modules ${name})
  file(READ ${WEB}/${name}.js text)
  string(REGEX MATCHALL "from \"\\./[A-Za-z]+\\.js\"" imports "${text}")
  foreach(import IN LISTS imports)
    string(REGEX REPLACE ".*/([A-Za-z]+)\\.js.*" "\\1" import "${import}")
    add_module(${import})
  endforeach()
  string(REGEX MATCHALL "\nexport (async )?(function|class|const) [A-Za-z_]+" exports "${text}")
  list(TRANSFORM exports REPLACE ".* " "")
  list(JOIN exports ", " exports)
  string(REGEX REPLACE "import ({[^}]*}) from \"\\./([A-Za-z]+)\\.js\"" "const \\1 = module_\\2" text "${text}")
  string(REGEX REPLACE "\nexport " "\n" text "${text}")
  if(NOT name STREQUAL "main")
    set(text "const module_${name} = (() => {\n${text}return { ${exports} };\n})();\n")
  endif()
  set_property(GLOBAL APPEND_STRING PROPERTY script "${text}")
endfunction()

# hash_source(VARIABLE TEXT): how a policy names the text.
function(hash_source variable text)
  set(letters "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
  string(SHA256 digits "${text}")
  set(base64 "")
  foreach(begin RANGE 0 63 6)
    string(SUBSTRING "${digits}0000" ${begin} 6 part)
    foreach(shift IN ITEMS 18 12 6 0)
      math(EXPR index "(0x${part} >> ${shift}) & 63")
      string(SUBSTRING "${letters}" ${index} 1 letter)
      string(APPEND base64 "${letter}")
    endforeach()
  endforeach()
  string(SUBSTRING "${base64}" 0 43 base64)
  set(${variable} "'sha256-${base64}='" PARENT_SCOPE)
endfunction()

# bytes_of(VARIABLE TEXT): the text as the initializer of an array.
function(bytes_of variable text)
  string(HEX "${text}" digits)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${digits}")
  set(${variable} "${bytes}" PARENT_SCOPE)
endfunction()

set(begin "")
set(end "")
if(DYGRAPHS)
  add_module(main)
  get_property(script GLOBAL PROPERTY script)
  file(READ ${DYGRAPHS}/dygraph.min.js dygraphs)
  string(REGEX REPLACE "//# sourceMappingURL=[^\n]*" "" dygraphs "${dygraphs}")
  file(READ ${DYGRAPHS}/dygraph.css dygraphs_style)
  file(READ ${WEB}/style.css style)
  file(READ ${WEB}/dygraphs-licence.txt licence)
  file(READ ${WEB}/index.html page)
  hash_source(script_hash "${script}")
  hash_source(dygraphs_hash "${dygraphs}")
  hash_source(style_hash "${dygraphs_style}${style}")
  string(REPLACE "@DYGRAPHS_LICENCE@" "${licence}" page "${page}")
  string(REPLACE "@SCRIPT_HASHES@" "${dygraphs_hash} ${script_hash}" page "${page}")
  string(REPLACE "@STYLE_HASH@" "${style_hash}" page "${page}")
  string(REPLACE "@DYGRAPHS_STYLE@@STYLE@" "${dygraphs_style}${style}" page "${page}")
  string(REPLACE "@DYGRAPHS@" "${dygraphs}" page "${page}")
  string(REPLACE "@SCRIPT@" "${script}" page "${page}")
  string(FIND "${page}" "@RECORDINGS@" place)
  string(SUBSTRING "${page}" 0 ${place} begin)
  math(EXPR place "${place} + 12")
  string(SUBSTRING "${page}" ${place} -1 end)
endif()
bytes_of(begin "${begin}")
bytes_of(end "${end}")
# A byte behind each, for an array cannot be empty.
file(WRITE ${OUT} "// Made by MakePage.cmake.
#include \"report/Page.h\"

namespace {

constexpr unsigned char kBegin[] = {${begin}0};
constexpr unsigned char kEnd[] = {${end}0};

}  // namespace

std::string_view PageBegin() {
  return {reinterpret_cast<const char*>(kBegin), sizeof kBegin - 1};
}

std::string_view PageEnd() {
  return {reinterpret_cast<const char*>(kEnd), sizeof kEnd - 1};
}
")
