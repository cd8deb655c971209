// fileLimit.h
//
// A disk that is full after a number of bytes, for tests of what is left behind then.

#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <iostream>

#include "support/coverage.h"

namespace tests {

// Runs `body` in a child process in which no file grows beyond `most` bytes: a write is cut there, and
// the next one fails. True when the body returned true and no expectation in it failed.
template <class Body>
bool succeedsWithFileLimit(rlim_t most, Body body) {
    std::cout.flush();
    const pid_t child = fork();
    if (child == 0) {
        stopCoverage();
        rlimit limit{};
        getrlimit(RLIMIT_FSIZE, &limit);
        const rlimit before = limit;
        limit.rlim_cur = most;
        bool done = std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0;
        if (done) done = body();
        std::cout.flush();
        if (setrlimit(RLIMIT_FSIZE, &before) == 0) writeCoverage();
        _exit(done && !testing::Test::HasFailure() ? 0 : 1);
    }
    int status = -1;
    if (child != -1) waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace tests
