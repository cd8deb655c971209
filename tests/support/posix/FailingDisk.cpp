#include "support/FailingDisk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace tests {
namespace {

struct Fault {
    DiskCall call = DiskCall::open;
    int callsLeft = 0;  // until the one that fails; 0: no call fails
    int error = 0;
    FailingDisk::Failing failing = FailingDisk::Failing::once;
    bool hasFailed = false;
};

Fault fault;

// Whether this use of the disk fails; then errno says why.
bool fails(DiskCall call) {
    if (fault.callsLeft == 0 || call != fault.call) return false;
    if (--fault.callsLeft != 0) return false;
    if (fault.failing == FailingDisk::Failing::forGood) fault.callsLeft = 1;
    fault.hasFailed = true;
    errno = fault.error;
    return true;
}

}  // namespace

const std::vector<DiskCall> kDiskCalls = {
    DiskCall::open,   DiskCall::read,    DiskCall::write,      DiskCall::close,
    DiskCall::chmod,  DiskCall::setTime, DiskCall::makeFolder, DiskCall::list,
    DiskCall::remove, DiskCall::rename,  DiskCall::status,
};

std::ostream& operator<<(std::ostream& out, DiskCall call) {
    static const char* const names[] = {"open",       "read", "write",  "close",  "chmod", "setTime",
                                        "makeFolder", "list", "remove", "rename", "status"};
    return out << names[static_cast<int>(call)];
}

FailingDisk::FailingDisk(DiskCall call, int number, int error, Failing failing) {
    fault = {call, number, error, failing, false};
}

FailingDisk::~FailingDisk() {
    fault = {};
}

bool FailingDisk::hasFailed() const {
    return fault.hasFailed;
}

}  // namespace tests

// The linker's option --wrap=NAME leads calls of NAME to __wrap_NAME, and has NAME itself as __real_NAME. The
// list in tests/CMakeLists.txt is the same.

using tests::DiskCall;

#define WRAP(call, failure, result, name, parameters, arguments)                   \
    result __real_##name parameters;                                               \
    result __wrap_##name parameters;                                               \
    result __wrap_##name parameters {                                              \
        return tests::fails(DiskCall::call) ? (failure) : __real_##name arguments; \
    }

extern "C" {

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list rest;
        va_start(rest, flags);
        mode = va_arg(rest, mode_t);
        va_end(rest);
    }
    return tests::fails(DiskCall::open) ? -1 : __real_open(path, flags, mode);
}

int __real_close(int descriptor);
int __wrap_close(int descriptor);
int __wrap_close(int descriptor) {
    const int status = __real_close(descriptor);
    return tests::fails(DiskCall::close) ? -1 : status;
}

WRAP(open, -1, int, mkostemp, (char* pattern, int flags), (pattern, flags))
WRAP(read, -1, ssize_t, read, (int from, void* buffer, size_t size), (from, buffer, size))
WRAP(write, -1, ssize_t, write, (int to, const void* data, size_t size), (to, data, size))
WRAP(write, -1, ssize_t, copy_file_range,
     (int from, off64_t* at, int to, off64_t* toAt, size_t size, unsigned flags),
     (from, at, to, toAt, size, flags))
WRAP(write, -1, int, fsync, (int descriptor), (descriptor))
WRAP(write, -1, int, ftruncate, (int descriptor, off_t size), (descriptor, size))
WRAP(chmod, -1, int, chmod, (const char* path, mode_t mode), (path, mode))
WRAP(chmod, -1, int, fchmod, (int descriptor, mode_t mode), (descriptor, mode))
WRAP(setTime, -1, int, futimens, (int descriptor, const timespec* times), (descriptor, times))
WRAP(makeFolder, -1, int, mkdir, (const char* path, mode_t mode), (path, mode))
WRAP(list, nullptr, DIR*, opendir, (const char* path), (path))
WRAP(list, nullptr, dirent*, readdir, (DIR * folder), (folder))
WRAP(remove, -1, int, unlink, (const char* path), (path))
WRAP(remove, -1, int, rmdir, (const char* path), (path))
WRAP(rename, -1, int, rename, (const char* from, const char* to), (from, to))
WRAP(rename, -1, int, link, (const char* from, const char* to), (from, to))
WRAP(status, -1, int, stat, (const char* path, struct stat* status), (path, status))
WRAP(status, -1, int, lstat, (const char* path, struct stat* status), (path, status))
WRAP(status, -1, int, fstat, (int descriptor, struct stat* status), (descriptor, status))
WRAP(status, -1, int, access, (const char* path, int mode), (path, mode))
WRAP(status, nullptr, char*, realpath, (const char* path, char* buffer), (path, buffer))
WRAP(status, -1, ssize_t, readlink, (const char* path, char* buffer, size_t size), (path, buffer, size))

}  // extern "C"
