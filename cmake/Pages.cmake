# The libraries that lay pages out, for the helpers of plain/siblings alone. Without them everything
# else is built: TARN_PAGES says whether they are there, and ON from outside makes their absence an error.
# TARN_PAGES_FOUND says whether they are built; scripts read it from the cache.
set(TARN_PAGES AUTO CACHE STRING "Build the helpers that lay pages out: ON, OFF, or AUTO where their packages are")
set(TARN_PAGES_FOUND FALSE CACHE INTERNAL "The packages of the helpers that lay pages out are there")
if(WIN32 OR TARN_PAGES STREQUAL "OFF")
  return()
endif()

# What an earlier run has found may have been removed since.
foreach(prefix PANGOCAIRO QPDF SECCOMP)
  unset(__pkg_config_checked_${prefix} CACHE)
endforeach()
foreach(library LITEHTML_LIBRARY GUMBO_LIBRARY GIF_LIBRARY)
  if(${library} AND NOT EXISTS "${${library}}")
    unset(${library} CACHE)
  endif()
endforeach()
if(NOT EXISTS "${LITEHTML_INCLUDE}/litehtml.h")
  unset(LITEHTML_INCLUDE CACHE)
endif()
if(NOT EXISTS "${LIBREOFFICEKIT_INCLUDE}/LibreOfficeKit/LibreOfficeKit.hxx")
  unset(LIBREOFFICEKIT_INCLUDE CACHE)
endif()

find_package(PkgConfig QUIET)
if(PKG_CONFIG_FOUND)
  pkg_check_modules(PANGOCAIRO QUIET IMPORTED_TARGET pangocairo cairo cairo-pdf libpng libjpeg libwebp icu-uc)
  pkg_check_modules(QPDF QUIET IMPORTED_TARGET libqpdf)
  pkg_check_modules(SECCOMP QUIET IMPORTED_TARGET libseccomp)
endif()
find_library(LITEHTML_LIBRARY litehtml)
find_library(GUMBO_LIBRARY gumbo)
find_library(GIF_LIBRARY gif)
find_path(LITEHTML_INCLUDE litehtml.h PATH_SUFFIXES litehtml)
find_path(LIBREOFFICEKIT_INCLUDE LibreOfficeKit/LibreOfficeKit.hxx)
if(PANGOCAIRO_FOUND AND QPDF_FOUND AND SECCOMP_FOUND AND LITEHTML_LIBRARY AND GUMBO_LIBRARY
    AND GIF_LIBRARY AND LITEHTML_INCLUDE AND LIBREOFFICEKIT_INCLUDE)
  set(TARN_PAGES_FOUND TRUE CACHE INTERNAL "")
  # A build after one of them is removed starts with another look.
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    ${LITEHTML_LIBRARY} ${GUMBO_LIBRARY} ${GIF_LIBRARY} ${LITEHTML_INCLUDE}/litehtml.h
    ${LIBREOFFICEKIT_INCLUDE}/LibreOfficeKit/LibreOfficeKit.hxx
    ${PANGOCAIRO_LINK_LIBRARIES} ${QPDF_LINK_LIBRARIES} ${SECCOMP_LINK_LIBRARIES})
elseif(TARN_PAGES STREQUAL "ON")
  message(FATAL_ERROR "TARN_PAGES is ON, and a library of the page helpers is missing")
endif()
