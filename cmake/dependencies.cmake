# The header-only packages that the stand-ins and the command line use. A cross compiler must not see
# the build machine's include folder, so there the two header folders are linked into the build.

find_package(Threads REQUIRED)

if(CMAKE_CROSSCOMPILING)
  set(headers "${CMAKE_CURRENT_BINARY_DIR}/packages")
  file(MAKE_DIRECTORY "${headers}")
  foreach(package CLI nlohmann)
    if(NOT EXISTS "${headers}/${package}")
      file(CREATE_LINK "/usr/include/${package}" "${headers}/${package}" SYMBOLIC)
    endif()
  endforeach()
  add_library(tvxconv_packages INTERFACE)
  target_include_directories(tvxconv_packages SYSTEM INTERFACE "${headers}")
  add_library(tvxconv::json ALIAS tvxconv_packages)
  add_library(tvxconv::commandLine ALIAS tvxconv_packages)
else()
  find_package(nlohmann_json 3.10 REQUIRED)
  find_package(CLI11 2.1 REQUIRED)
  add_library(tvxconv::json ALIAS nlohmann_json::nlohmann_json)
  add_library(tvxconv::commandLine ALIAS CLI11::CLI11)
  # What attribute lists are measured against. Without it that measurement is left out.
  find_package(RapidJSON 1.1 QUIET)
endif()
