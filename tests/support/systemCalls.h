// systemCalls.h
//
// System calls that fail, or are met by a signal, where a test wants it: a program run under strace. What
// strace cannot do here (it is missing, or may not trace) is for a test to skip.

#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "support/TestFolder.h"
#include "support/coverage.h"

namespace tests {

// A run with an injection, as strace writes them: "rename:error=EIO:when=3", "unlink:signal=SIGINT:when=2".
// `fired` tells that the call was met. `folder` is the current folder of the run ("" for ours).
struct InjectedRun {
    ProgramResult result;
    bool fired = false;
};

inline InjectedRun runInjected(const std::string& injection, const std::vector<std::string>& program,
                               const std::string& folder = "") {
    const TestFolder scratch;
    const std::string log = scratch.path("log");
    const std::string calls = injection.substr(0, injection.find(':'));
    std::vector<std::string> command = {
        "strace", "-f", "-qq", "-o", log, "-e", "trace=" + calls, "-e", "inject=" + injection};
    // The filter in the kernel stops the program at these calls alone, which halves the time of a run. It
    // knows no signals.
    if (injection.find(":signal=") == std::string::npos) command.insert(command.begin() + 2, "--seccomp-bpf");
    command.insert(command.end(), program.begin(), program.end());
    InjectedRun run;
    // A program that is traced already cannot be searched for leaks.
    std::vector<std::string> environment = kWithoutCoverage;
    environment.push_back("ASAN_OPTIONS=detect_leaks=0");
    run.result = runProgram(command, folder, environment);
    const std::string text = readFile(log);
    run.fired = text.find("(INJECTED)") != std::string::npos || text.find("--- SIG") != std::string::npos;
    return run;
}

// Whether injections work here.
inline bool canInject() {
    const InjectedRun run = runInjected("write:error=EIO:when=1", {"/bin/echo", "text"});
    return run.fired && run.result.status == 1;
}

// How often a run makes each of these calls before the first one that has `text` in it: what the loader
// does, and no test is about.
inline std::vector<int> callsBefore(const std::string& text, const std::vector<std::string>& calls,
                                    const std::vector<std::string>& program) {
    const TestFolder scratch;
    std::vector<std::string> command = {"strace", "-qq", "-s", "4096", "-o", scratch.path("log")};
    command.insert(command.end(), program.begin(), program.end());
    runProgram(command, "", {"ASAN_OPTIONS=detect_leaks=0"});
    std::vector<int> counts(calls.size());
    const std::string log = readFile(scratch.path("log"));
    for (std::size_t begin = 0; begin < log.size();) {
        const std::size_t end = std::min(log.find('\n', begin), log.size());
        const std::string line = log.substr(begin, end - begin);
        if (!line.starts_with("execve(") && line.find(text) != std::string::npos) break;
        for (std::size_t i = 0; i < calls.size(); ++i) {
            if (line.starts_with(calls[i] + "(")) ++counts[i];
        }
        begin = end + 1;
    }
    return counts;
}

}  // namespace tests
