// foldersInMemory.h
//
// For tests that make very many folders: these cost little in memory.

#pragma once

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace tests {

// For as long as it is there, a TestFolder is made in memory, where the system has a place for that; or in
// another place, which may be written to.
class FoldersInMemory {
public:
    explicit FoldersInMemory(const std::string& place = "/dev/shm") {
        if (const char* before = std::getenv("TMPDIR")) before_ = before;
        if (access(place.c_str(), W_OK | X_OK) == 0) setenv("TMPDIR", place.c_str(), 1);
    }
    ~FoldersInMemory() {
        if (before_.empty()) {
            unsetenv("TMPDIR");
        } else {
            setenv("TMPDIR", before_.c_str(), 1);
        }
    }
    FoldersInMemory(const FoldersInMemory&) = delete;
    FoldersInMemory& operator=(const FoldersInMemory&) = delete;

private:
    std::string before_;
};

}  // namespace tests
