# The libraries that lay pages out, for the helpers of plain/siblings alone. Without them everything
# else is built: TARN_PAGES says whether they are there, and ON from outside makes their absence an error.
set(TARN_PAGES AUTO CACHE STRING "Build the helpers that lay pages out: ON, OFF, or AUTO where their packages are")
set(TARN_PAGES_FOUND FALSE)
if(WIN32 OR TARN_PAGES STREQUAL "OFF")
  return()
endif()

find_package(PkgConfig QUIET)
if(PKG_CONFIG_FOUND)
  pkg_check_modules(PANGOCAIRO QUIET IMPORTED_TARGET pangocairo cairo cairo-pdf libpng libjpeg)
  pkg_check_modules(QPDF QUIET IMPORTED_TARGET libqpdf)
  pkg_check_modules(SECCOMP QUIET IMPORTED_TARGET libseccomp)
endif()
find_library(LITEHTML_LIBRARY litehtml)
find_library(GUMBO_LIBRARY gumbo)
find_path(LITEHTML_INCLUDE litehtml.h PATH_SUFFIXES litehtml)
find_path(LIBREOFFICEKIT_INCLUDE LibreOfficeKit/LibreOfficeKit.hxx)
if(PANGOCAIRO_FOUND AND QPDF_FOUND AND SECCOMP_FOUND AND LITEHTML_LIBRARY AND GUMBO_LIBRARY
    AND LITEHTML_INCLUDE AND LIBREOFFICEKIT_INCLUDE)
  set(TARN_PAGES_FOUND TRUE)
elseif(TARN_PAGES STREQUAL "ON")
  message(FATAL_ERROR "TARN_PAGES is ON, and a library of the page helpers is missing")
endif()
