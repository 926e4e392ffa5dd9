# How every target of this project is compiled, and the short forms the folders use.

add_library(tarn_common_options INTERFACE)
target_compile_options(tarn_common_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  # GCC 12 sees overlapping copies in sums of strings where there are none (its bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  # A source compiled with others shares their namespaces, and is not the main file that GCC thinks of.
  $<$<AND:$<BOOL:${TARN_UNITY}>,$<COMPILE_LANG_AND_ID:CXX,GNU>>:-Wno-shadow -Wno-subobject-linkage>
  # Source locations name files below the project, not places on the build machine.
  -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
if(WIN32)
  target_compile_definitions(tarn_common_options INTERFACE WIN32_LEAN_AND_MEAN NOMINMAX)
endif()
# What a release can do against attack that the compiler and the linker give. The sanitizers of the
# other build see more, and do not go with it.
if(WIN32)
  target_link_options(tarn_common_options INTERFACE
    LINKER:--dynamicbase,--high-entropy-va,--nxcompat
    # The same bytes from the same sources, whenever they are linked.
    LINKER:--no-insert-timestamp)
elseif(NOT TARN_SANITIZE AND NOT TARN_THREAD_SANITIZER)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES C CXX)
  target_compile_options(tarn_common_options INTERFACE
    # Needs optimisation.
    $<$<CONFIG:Release>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>
    -fstack-protector-strong)
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    target_compile_options(tarn_common_options INTERFACE -fcf-protection)
  endif()
  target_link_options(tarn_common_options INTERFACE LINKER:-z,relro,-z,now)
endif()
if(TARN_SANITIZE)
  target_compile_options(tarn_common_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tarn_common_options INTERFACE -fsanitize=address,undefined
    # Half a million places of the sanitizers' tables would be moved at each start of a program, of
    # which tests make thousands.
    $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
endif()
if(TARN_THREAD_SANITIZER)
  target_compile_options(tarn_common_options INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
  target_link_options(tarn_common_options INTERFACE -fsanitize=thread)
endif()
# For all but tests: what these do themselves leads to nothing that fuzzing looks for.
add_library(tarn_options INTERFACE)
target_link_libraries(tarn_options INTERFACE tarn_common_options)
if(TARN_FUZZ)
  # Coverage feedback for the fuzz targets; ordinary programs run as before.
  target_compile_options(tarn_options INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(tarn_common_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# For what reads command lines, and sets others to work: it waits more than it works. Compiled for a
# short build where sanitizers make that long.
add_library(tarn_idle_options INTERFACE)
target_link_libraries(tarn_idle_options INTERFACE tarn_options)
target_compile_options(tarn_idle_options INTERFACE $<$<CONFIG:Debug>:-O0>)

# What tests reach of the filter and the plain kernel is counted for scripts/coverage.sh: at run time
# every process adds to the profiles in this folder. Tests are compiled so too, since inline functions and
# templates of src/ are run as the test's own file has them.
set(TARN_PROFILES "${CMAKE_BINARY_DIR}/profiles")
add_library(tarn_counted INTERFACE)
if(TARN_COVERAGE)
  target_compile_options(tarn_counted INTERFACE
    "-fprofile-instr-generate=${TARN_PROFILES}/%4m.profraw" -fcoverage-mapping)
  target_link_options(tarn_common_options INTERFACE -fprofile-instr-generate)
endif()

# The public headers (Include/) and the records that subsystems share (Include/Internal/).
add_library(tarn_headers INTERFACE)
target_include_directories(tarn_headers INTERFACE ${CMAKE_SOURCE_DIR}/Include)

# tarn_subsystem(<name> SOURCES <file>... DEPENDS <target>...)
# One folder below src/ as a static library that names exactly what it builds on.
function(tarn_subsystem name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC tarn_headers ${ARG_DEPENDS} PRIVATE tarn_options tarn_counted)
endfunction()

# Tests and what they build their inputs with: compiled for a short build. What they test is
# compiled as the build type says.
add_library(tarn_busy_test_options INTERFACE)
target_link_libraries(tarn_busy_test_options INTERFACE tarn_common_options tarn_counted)
target_compile_options(tarn_busy_test_options INTERFACE
  $<$<CONFIG:Release>:-O1>
  # GCC 12 sees copies beyond short strings at this level where there are none.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread>)

# Most tests take longer to compile than to run.
add_library(tarn_test_options INTERFACE)
target_link_libraries(tarn_test_options INTERFACE tarn_busy_test_options)
target_compile_options(tarn_test_options INTERFACE -O0 -U_FORTIFY_SOURCE)

# tarn_test_units(<name> <list>): the sources of tests in the list become a few that hold several each,
# without those that have SKIP_UNITY_BUILD_INCLUSION.
function(tarn_test_units name list)
  set(most 8)
  set(alone "")
  set(tests "")
  foreach(source IN LISTS ${list})
    get_filename_component(path ${source} ABSOLUTE)
    get_source_file_property(is_alone ${path} SKIP_UNITY_BUILD_INCLUSION)
    cmake_path(IS_PREFIX CMAKE_CURRENT_SOURCE_DIR ${path} is_own)
    if(is_own AND NOT is_alone AND path MATCHES "Test\\.cpp$")
      list(APPEND tests ${path})
    else()
      list(APPEND alone ${source})
    endif()
  endforeach()
  list(LENGTH tests left)
  math(EXPR units "(${left} + ${most} - 1) / ${most}")
  while(units GREATER 0)
    math(EXPR size "(${left} + ${units} - 1) / ${units}")
    list(SUBLIST tests 0 ${size} some)
    list(REMOVE_ITEM tests ${some})
    math(EXPR left "${left} - ${size}")
    set(unit ${CMAKE_CURRENT_BINARY_DIR}/${name}-${units}.cpp)
    add_custom_command(OUTPUT ${unit}
      COMMAND ${CMAKE_COMMAND} -DUNIT=${unit} "-DSOURCES=${some}" -P ${CMAKE_SOURCE_DIR}/cmake/TestUnit.cmake
      DEPENDS ${some} ${CMAKE_SOURCE_DIR}/cmake/TestUnit.cmake
      COMMENT "" VERBATIM)
    # They include what is beside them.
    set(folders ${some})
    list(TRANSFORM folders REPLACE "/[^/]*$" "")
    list(REMOVE_DUPLICATES folders)
    set_source_files_properties(${unit} PROPERTIES INCLUDE_DIRECTORIES "${folders}")
    list(APPEND alone ${unit})
    math(EXPR units "${units} - 1")
  endwhile()
  set(${list} ${alone} PARENT_SCOPE)
endfunction()

# tarn_test(<name> [BUSY] [LONG] LABELS <label>... SOURCES <file>... DEPENDS <target>...)
# One GoogleTest binary; every test in it fails when it leaves anything behind in the kernel. BUSY
# tests compute much themselves, or by templates that are compiled with them. Where a binary is
# one test, LONG ones are begun first, so that none runs alone at the end.
#
# Without TARN_UNIT_TESTS, those of single parts are neither built nor run ("unit", and "fault" where their
# calls fail): what is left drives the built libraries and programs, and asks the system ("platform").
#
# Each test is one of CTest's, in a process of its own, unless TARN_TESTS_BY_BINARY says otherwise:
# then the binary is, and leaves <name>.xml in its folder of the build tree.
function(tarn_test name)
  cmake_parse_arguments(ARG "BUSY;LONG" "" "LABELS;SOURCES;DEPENDS" ${ARGN})
  if(TARN_UNITY)
    tarn_test_units(${name} ARG_SOURCES)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE tarn_test_support ${ARG_DEPENDS})
  if(ARG_BUSY)
    target_link_libraries(${name} PRIVATE tarn_busy_test_options)
  else()
    target_link_libraries(${name} PRIVATE tarn_test_options)
    target_precompile_headers(${name} REUSE_FROM tarn_test_headers)
  endif()
  set_target_properties(${name} PROPERTIES
    UNITY_BUILD OFF
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests
    BUILD_RPATH "${CMAKE_BINARY_DIR}")
  if(NOT TARN_UNIT_TESTS AND ARG_LABELS MATCHES "unit|fault" AND NOT ARG_LABELS MATCHES "platform")
    set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL TRUE)
    return()
  endif()
  if(TARN_TESTS_BY_BINARY)
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1 --gtest_output=xml:${name}.xml)
    set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}")
    if(ARG_LONG)
      set_tests_properties(${name} PROPERTIES COST 100)
    endif()
  else()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
      PROPERTIES LABELS "${ARG_LABELS}")
  endif()
endfunction()
