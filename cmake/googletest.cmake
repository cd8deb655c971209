# The test framework: as installed; for another system, which has none installed, from the sources that Debian
# packages beside it.
if(NOT CMAKE_CROSSCOMPILING)
  find_package(GTest REQUIRED)
  return()
endif()

set(TVXCONV_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "The sources of GoogleTest")
set(googletest "${TVXCONV_GOOGLETEST_SOURCE}/googletest")
set(googlemock "${TVXCONV_GOOGLETEST_SOURCE}/googlemock")
if(NOT EXISTS "${googletest}/src/gtest-all.cc")
  message(FATAL_ERROR "There are no sources of GoogleTest in ${TVXCONV_GOOGLETEST_SOURCE} (package googletest)")
endif()
add_library(tvxconv_googletest STATIC
    "${googletest}/src/gtest-all.cc" "${googlemock}/src/gmock-all.cc" "${googletest}/src/gtest_main.cc")
target_include_directories(tvxconv_googletest
    SYSTEM PUBLIC "${googletest}/include" "${googlemock}/include" PRIVATE "${googletest}" "${googlemock}")
target_compile_options(tvxconv_googletest PRIVATE -w) # not our code, so not our warnings
target_link_libraries(tvxconv_googletest PUBLIC Threads::Threads)
add_library(GTest::gmock ALIAS tvxconv_googletest)
add_library(GTest::gtest_main ALIAS tvxconv_googletest)
