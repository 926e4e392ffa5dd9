# Code of others that every build uses: Boost's headers, the command line parser, JSON, GoogleTest.
# On the build machine they are its packages; in a cross-build the same packages' headers, and
# GoogleTest from its packaged source.
if(CMAKE_CROSSCOMPILING)
  include(HostHeaders)
  tarn_host_headers(Boost::headers boost)
  tarn_host_headers(CLI11::CLI11 CLI)
  tarn_host_headers(nlohmann_json::nlohmann_json nlohmann)
  set(BUILD_GMOCK OFF)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
else()
  find_package(Boost 1.74 REQUIRED)
  find_package(CLI11 REQUIRED)
  find_package(nlohmann_json REQUIRED)
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)
