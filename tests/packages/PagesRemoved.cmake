# Configures a build tree with the packages of the page helpers, without them, and with them again.
# BINARY_DIR is the tree, which is made anew; PAGES_MODULE, GENERATOR and COMPILER are the project's.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${BINARY_DIR})

# configure(WANTED [ARGUMENT...]): fails unless the tree then says so: TRUE, FALSE, or refused.
function(configure wanted)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/pages-removed -B ${BINARY_DIR} -G ${GENERATOR}
      -DCMAKE_CXX_COMPILER=${COMPILER} -DPAGES_MODULE=${PAGES_MODULE} ${ARGN}
    OUTPUT_VARIABLE said ERROR_VARIABLE said RESULT_VARIABLE status)
  set(found refused)
  if(status EQUAL 0)
    load_cache(${BINARY_DIR} READ_WITH_PREFIX is_ TARN_PAGES_FOUND)
    set(found ${is_TARN_PAGES_FOUND})
  endif()
  if(NOT found STREQUAL wanted)
    message(FATAL_ERROR "${ARGN}: ${found}, not ${wanted}\n${said}")
  endif()
endfunction()

configure(TRUE)
# A file that is where nothing is any more is looked for again.
configure(TRUE -DLITEHTML_LIBRARY=/nowhere/liblitehtml.so -DLIBREOFFICEKIT_INCLUDE=/nowhere)
configure(FALSE -DTARN_PAGES=OFF)
configure(TRUE -DTARN_PAGES=ON)
set(ENV{PKG_CONFIG_LIBDIR} ${BINARY_DIR})
configure(refused)
configure(FALSE -DTARN_PAGES=AUTO)
configure(FALSE)
unset(ENV{PKG_CONFIG_LIBDIR})
configure(TRUE)
