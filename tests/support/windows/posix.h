// posix.h
//
// The calls of POSIX systems that tests make, on Windows; included there before everything else. What Windows
// has in another form is here in the usual one. What it has not at all ends the test that asks for it, as
// skipped, with the reason.

#pragma once

#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace tests {

// Ends the running test as skipped. (Failures before it stay.)
[[noreturn]] void skipTest(const char* reason);

int changePermissions(const char* path, unsigned permissions);
int openPipe(int* ends);

}  // namespace tests

// --- other forms of what Windows has ---

char* mkdtemp(char* pattern);
int setenv(const char* name, const char* value, int overwrite);
int unsetenv(const char* name);
void* dlopen(const char* path, int flags);
void* dlsym(void* module, const char* name);
int dlclose(void* module);

constexpr int RTLD_NOW = 0;
constexpr int RTLD_LOCAL = 0;
constexpr int O_DIRECTORY = 0;
constexpr int O_CLOEXEC = 0;

// Of all permissions Windows has "read-only", for files: any other ends the test.
#define chmod(path, permissions) tests::changePermissions(path, permissions)
#define mkdir(path, permissions) _mkdir(path)
#define pipe(ends) tests::openPipe(ends)

// --- what Windows has not ---

using rlim_t = unsigned long long;
struct rlimit {
    rlim_t rlim_cur;
    rlim_t rlim_max;
};
constexpr int RLIMIT_FSIZE = 1;
constexpr int RLIMIT_NOFILE = 2;
constexpr int SIGXFSZ = SIGTERM;
constexpr int SIGKILL = SIGTERM;
constexpr int WNOHANG = 1;

[[noreturn]] inline pid_t fork() {
    tests::skipTest("needs a child process that goes on from here, without rights, room or a future");
}
[[noreturn]] inline int mkfifo(const char*, unsigned) {
    tests::skipTest("needs a pipe among the files");
}
[[noreturn]] inline int lchown(const char*, unsigned, unsigned) {
    tests::skipTest("needs owners of files");
}
constexpr unsigned long MS_REMOUNT = 1;
constexpr int MNT_DETACH = 1;
[[noreturn]] inline int mount(const char*, const char*, const char*, unsigned long, const void*) {
    tests::skipTest("needs a disk of its own");
}
[[noreturn]] inline int umount2(const char*, int) {
    tests::skipTest("needs a disk of its own");
}
struct statvfs {
    unsigned long f_files;
    unsigned long f_ffree;
};
[[noreturn]] inline int statvfs(const char*, struct statvfs*) {
    tests::skipTest("needs the room on a disk");
}
[[noreturn]] inline int getrlimit(int, rlimit*) {
    tests::skipTest("needs limits of a process");
}
[[noreturn]] inline int setrlimit(int, const rlimit*) {
    tests::skipTest("needs limits of a process");
}
struct cookie_io_functions_t {
    ssize_t (*read)(void* cookie, char* buffer, std::size_t size);
    ssize_t (*write)(void* cookie, const char* data, std::size_t size);
    int (*seek)(void* cookie, off64_t* offset, int whence);
    int (*close)(void* cookie);
};
[[noreturn]] inline std::FILE* fopencookie(void*, const char*, cookie_io_functions_t) {
    tests::skipTest("needs a stream made of functions");
}
[[noreturn]] inline int kill(pid_t, int) {
    tests::skipTest("needs signals between processes");
}
[[noreturn]] inline pid_t waitpid(pid_t, int*, int) {
    tests::skipTest("needs a child process");
}

inline int setuid(unsigned) {
    return -1;
}
inline int setgid(unsigned) {
    return -1;
}
inline unsigned geteuid() {
    return 0;
}
inline bool WIFEXITED(int) {
    return false;
}
inline bool WIFSIGNALED(int) {
    return false;
}
inline int WEXITSTATUS(int status) {
    return status;
}
inline int WTERMSIG(int status) {
    return status;
}
