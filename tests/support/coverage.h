// coverage.h
//
// Coverage data and children: a program that is built for coverage writes its data when it ends, starts
// another program or unloads a module. A child that cannot write whole files would destroy them. In other
// builds nothing here has an effect.

#pragma once

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#ifdef TVXCONV_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace tests {

// For the environment of a program: it writes no coverage data.
inline const std::vector<std::string> kWithoutCoverage = {"GCOV_PREFIX=/dev/null",
                                                          "GCOV_ERROR_FILE=/dev/null"};

// From now on this process and what it starts write none.
inline void stopCoverage() {
    setenv("GCOV_PREFIX", "/dev/null", 1);
    setenv("GCOV_ERROR_FILE", "/dev/null", 1);
}

// Writes what this process has covered, for a child that has all its rights back and ends with _exit.
inline void writeCoverage() {
#ifdef TVXCONV_COVERAGE
    unsetenv("GCOV_PREFIX");
    __gcov_dump();
#endif
}

// What a program has printed, without the messages that it could not write its data.
inline std::string withoutCoverageMessages(std::string errors) {
#ifdef TVXCONV_COVERAGE
    const std::string begin = "profiling:";
    for (std::size_t at = errors.find(begin); at != std::string::npos; at = errors.find(begin)) {
        const std::size_t end = errors.find('\n', at);
        errors.erase(at, end == std::string::npos ? end : end + 1 - at);
    }
#endif
    return errors;
}

}  // namespace tests
