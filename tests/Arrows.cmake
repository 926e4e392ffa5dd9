# Fails when a source file includes a header of a folder that its own does not build on, or asks the
# system for what only the platform layer may ask for.

cmake_minimum_required(VERSION 3.25)

set(may_include_Platform)
set(may_include_Common Platform)
set(may_include_rtf Common Platform)
set(may_include_eml Common Platform)
set(may_include_render Common Platform eml rtf)
set(may_include_pststore Common Platform)
set(may_include_compound Common)
set(may_include_msg Common Platform compound rtf render)
set(may_include_FileFormats Common Platform eml msg rtf render pststore)

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
  # Containers that take their memory from the kernel are those of the two file layers, and of what
  # names itself here and lets none of their exceptions out.
  set(may_use_containers Common/KernelAllocator.h Common/ImagePass.h)
  set(forbidden "_WIN32|<(fstream|filesystem|iostream|cstdlib|stdlib\\.h|unistd\\.h|windows\\.h)>|std::(fopen|getenv|malloc)[^_a-z]")
  if(NOT folder MATCHES "^(pststore|compound)$" AND NOT name IN_LIST may_use_containers)
    string(APPEND forbidden "|<(string|vector|map)>|std::(string|vector|map)[^_a-z]")
  endif()
  if(NOT folder STREQUAL "Platform")
    file(STRINGS "${source}" system REGEX "${forbidden}")
    foreach(line IN LISTS system)
      string(APPEND errors "${name}: ${line}\n")
    endforeach()
  endif()
endforeach()

if(errors)
  message(FATAL_ERROR "wrong arrows:\n${errors}")
endif()
