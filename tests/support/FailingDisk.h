// FailingDisk.h
//
// A disk that fails on demand, in the process of the test: the test program is linked so that its calls of
// the system, and those of what is linked into it, come by here. Shared libraries and the standard library's
// own calls do not. Not on Windows; tests that need it are in files named faults_test.cpp.
//
//   for (int number = 1;; ++number) {
//       const FailingDisk disk(DiskCall::write, number);
//       ... what writes ...
//       if (!disk.hasFailed()) break;  // as many calls as that there are not
//   }

#pragma once

#include <cerrno>
#include <ostream>
#include <vector>

namespace tests {

// A kind of use. Bytes that the kernel copies from file to file count as written; to ask what a name leads
// to, or whether it may be used, is to ask for the status.
enum class DiskCall { open, read, write, close, chmod, setTime, makeFolder, list, remove, rename, status };

extern const std::vector<DiskCall> kDiskCalls;

std::ostream& operator<<(std::ostream& out, DiskCall call);

class FailingDisk {
public:
    enum class Failing { once, forGood };

    // As long as this lives, the `number`-th use of the disk by `call` (the first is 1) fails with `error`;
    // with Failing::forGood so do all after it. A close that fails has closed. One of these at a time.
    FailingDisk(DiskCall call, int number, int error = EIO, Failing failing = Failing::once);
    ~FailingDisk();
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;

    bool hasFailed() const;
};

}  // namespace tests
