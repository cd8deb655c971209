// builtFiles.h
//
// What the build has made, by the names that the system gives to programs and modules.

#pragma once

#ifdef _WIN32
#define TESTS_PROGRAM(name) TVXCONV_BIN_DIR "/" name ".exe"
#define TESTS_MODULE(name) name ".dll"
#define TESTS_LIBRARY(name) name ".dll"
#else
#define TESTS_PROGRAM(name) TVXCONV_BIN_DIR "/" name
#define TESTS_MODULE(name) name ".so"
#define TESTS_LIBRARY(name) "lib" name ".so"
#endif

namespace tests {

constexpr const char* kProgramFile = TESTS_PROGRAM("tvxconv");
constexpr const char* kHostFile = TESTS_PROGRAM("tvxconv_host");
constexpr const char* kTarnetHostFile = TESTS_PROGRAM("tvxconv_tarnet_host");
constexpr const char* kLibraryFile = TVXCONV_BIN_DIR "/" TESTS_LIBRARY("tvxconv");
constexpr const char* kProjectLibraryName = TESTS_LIBRARY("tvx_wobj");
constexpr const char* kProjectLibraryFile = TVXCONV_BIN_DIR "/" TESTS_LIBRARY("tvx_wobj");
constexpr const char* kReaderName = TESTS_MODULE("DraDsnReader");
constexpr const char* kReaderFile = TVXCONV_BIN_DIR "/" TESTS_MODULE("DraDsnReader");

}  // namespace tests

#undef TESTS_PROGRAM
#undef TESTS_MODULE
#undef TESTS_LIBRARY
