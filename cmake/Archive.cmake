# The libraries that the archive commands read mail with, for plain/archive alone. Without them everything
# else is built: TARN_ARCHIVE says whether they are there, and ON from outside makes their absence an error.
set(TARN_ARCHIVE AUTO CACHE STRING "Build the archive commands: ON, OFF, or AUTO where their packages are")
set(TARN_ARCHIVE_FOUND FALSE)
if(WIN32 OR TARN_ARCHIVE STREQUAL "OFF")
  return()
endif()

find_package(PkgConfig QUIET)
if(PKG_CONFIG_FOUND)
  pkg_check_modules(GMIME QUIET IMPORTED_TARGET gmime-3.0)
  pkg_check_modules(ARCHIVE_ICU QUIET IMPORTED_TARGET icu-uc)
  pkg_check_modules(ARCHIVE_QPDF QUIET IMPORTED_TARGET libqpdf)
  pkg_check_modules(ARCHIVE_CRYPTO QUIET IMPORTED_TARGET libcrypto)
  pkg_check_modules(ARCHIVE_ICAL QUIET IMPORTED_TARGET libical)
  pkg_check_modules(SQLITE QUIET IMPORTED_TARGET sqlite3)
endif()
find_library(GUMBO_PARSER gumbo)
if(GMIME_FOUND AND ARCHIVE_ICU_FOUND AND ARCHIVE_QPDF_FOUND AND ARCHIVE_CRYPTO_FOUND AND ARCHIVE_ICAL_FOUND AND
   SQLITE_FOUND AND GUMBO_PARSER)
  set(TARN_ARCHIVE_FOUND TRUE)
elseif(TARN_ARCHIVE STREQUAL "ON")
  message(FATAL_ERROR "TARN_ARCHIVE is ON, and a library of the archive commands is missing")
endif()
