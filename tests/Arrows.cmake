# Fails when a source file includes a header of a folder that its own does not build on, or asks the
# system for what only the platform layer may ask for.

cmake_minimum_required(VERSION 3.25)

set(may_include_Platform)
set(may_include_Common Platform)
set(may_include_rtf Common Platform)
set(may_include_eml Common Platform)
set(may_include_render Common Platform eml rtf)
set(may_include_FileFormats Common Platform eml rtf render)

set(errors "")
file(GLOB_RECURSE sources "${ROOT}/src/*.h" "${ROOT}/src/*.cpp" "${ROOT}/src/*.inc")
list(LENGTH sources count)
if(count LESS 20)
  message(FATAL_ERROR "only ${count} sources below ${ROOT}/src")
endif()

foreach(source IN LISTS sources)
  file(RELATIVE_PATH name "${ROOT}/src" "${source}")
  string(REGEX REPLACE "/.*" "" folder "${name}")
  file(STRINGS "${source}" includes REGEX "^#include \"[A-Za-z]+/")
  foreach(line IN LISTS includes)
    string(REGEX REPLACE "^#include \"([A-Za-z]+)/.*" "\\1" target "${line}")
    if(IS_DIRECTORY "${ROOT}/src/${target}" AND NOT target STREQUAL folder
       AND NOT target IN_LIST may_include_${folder})
      string(APPEND errors "${name}: ${line}\n")
    endif()
    if(folder STREQUAL "Platform" AND NOT target STREQUAL "Platform")
      string(APPEND errors "${name}: ${line}\n")
    endif()
  endforeach()
  if(NOT folder STREQUAL "Platform")
    file(STRINGS "${source}" system
      REGEX "_WIN32|<(fstream|filesystem|iostream|cstdlib|stdlib\\.h|unistd\\.h|windows\\.h|string|vector|map)>|std::(string|vector|map|fopen|getenv|malloc)[^_a-z]")
    foreach(line IN LISTS system)
      string(APPEND errors "${name}: ${line}\n")
    endforeach()
  endif()
endforeach()

if(errors)
  message(FATAL_ERROR "wrong arrows:\n${errors}")
endif()
