#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <link.h>
#include <malloc.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/folderIndex.h"
#include "platform/platform.h"

namespace tvxconv::platform {
namespace {

std::atomic<bool> stopped{false};
std::atomic<std::uint64_t> filesOpenedForWriting{0};
static_assert(std::atomic<bool>::is_always_lock_free, "stopFiles is called from a signal handler");

// Makes a system call on the path as spelled and, if there is no such file, on the one that a system
// ignoring letter case would use. `call` returns -1 with errno set, as system calls do.
template <class Call>
int onExisting(const char* path, Call call) {
    const int result = call(path);
    if (result != -1 || errno != ENOENT) return result;
    const std::string actual = findSpellings(path).existing();
    if (!actual.empty() && actual != path) return call(actual.c_str());
    errno = ENOENT;
    return -1;
}

// The path for a new entry `path`: that of its twin in another case if there is one, else as spelled, also
// if its folder does not exist.
std::string placeForNew(const char* path) {
    const Spellings found = findSpellings(path);
    if (!found.hasFolder) return path;
    const std::string existing = found.existing();
    return existing.empty() ? found.asAsked : existing;
}

// The same for a path that usually exists as spelled: then the names of its folder are not needed.
std::string placeIfThere(const char* path) {
    struct stat status {};
    return !isFolderKnown(path) && lstat(path, &status) == 0 ? path : placeForNew(path);
}

int errorOf(int result) {
    return result == -1 ? errno : 0;
}

FileStatus statusFrom(const struct stat& status) {
    FileStatus result;
    result.kind = S_ISREG(status.st_mode)   ? FileKind::regular
                  : S_ISDIR(status.st_mode) ? FileKind::folder
                                            : FileKind::other;
    result.permissions = status.st_mode & 0777U;
    result.size = static_cast<std::uint64_t>(status.st_size);
    result.volume = status.st_dev;
    result.number = status.st_ino;
    result.changedAt = status.st_mtime;
    result.changedAtFraction = static_cast<std::int32_t>(status.st_mtim.tv_nsec);
    return result;
}

// Without O_NONBLOCK, opening a pipe that has no partner would never return.
constexpr int kOpenFlags = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

int closeWith(int descriptor, int error) {
    close(descriptor);
    return error;
}

// The folder of the program or library that contains this code, with a slash at its end; empty if it cannot
// be found out.
std::string folderOfThisCode() {
    Dl_info self{};
    link_map* loaded = nullptr;
    // `stopped` has an address in this module.
    if (dladdr1(&stopped, &self, reinterpret_cast<void**>(&loaded), RTLD_DL_LINKMAP) == 0) return {};
    std::string path;
    if (loaded != nullptr && loaded->l_name != nullptr && loaded->l_name[0] != '\0') {
        path = absolutePath(loaded->l_name);
    } else {  // the program itself, which may have been started by a bare name
        char target[PATH_MAX];
        const ssize_t length = readlink("/proc/self/exe", target, sizeof target);
        if (length > 0) path.assign(target, static_cast<std::size_t>(length));
    }
    path.resize(path.rfind('/') + 1);
    return path;
}

// Opens with O_NOATIME: updating the access times of the old files is a tenth of the work where there are
// many. Only the owner may do that, so fall back.
int openWithoutTrace(const char* path) {
    static bool mayAsk = true;
    if (mayAsk) {
        const int file = open(path, O_RDONLY | O_NOATIME | kOpenFlags);
        if (file != -1 || errno != EPERM) return file;
    }
    const int file = open(path, O_RDONLY | kOpenFlags);
    if (file != -1) mayAsk = false;
    return file;
}

}  // namespace

bool isSameFile(const FileStatus& a, const FileStatus& b) {
    return a.kind != FileKind::none && a.volume == b.volume && a.number == b.number;
}

int getStatus(const char* path, FileStatus& status) {
    status = FileStatus();
    struct stat found {};
    const int result = onExisting(path, [&](const char* actual) { return stat(actual, &found); });
    if (result == 0) status = statusFrom(found);
    return errorOf(result);
}

int getStatus(int descriptor, FileStatus& status) {
    status = FileStatus();
    struct stat found {};
    const int result = fstat(descriptor, &found);
    if (result == 0) status = statusFrom(found);
    return errorOf(result);
}

std::string followLinks(const std::string& path) {
    struct stat status {};
    const std::string actual = pathOnDisk(path);
    if (lstat(actual.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return actual;
    const std::unique_ptr<char, void (*)(void*)> target(realpath(actual.c_str(), nullptr), std::free);
    return target != nullptr ? target.get() : actual;
}

std::string pathOnDisk(const std::string& path) {
    std::string result = path;
    onExisting(path.c_str(), [&](const char* actual) {
        result = actual;
        struct stat status {};
        return stat(actual, &status);
    });
    return result;
}

int checkAccess(const char* path, int mode) {
    const int test = mode == 0 ? F_OK : ((mode & 4) != 0 ? R_OK : 0) | ((mode & 2) != 0 ? W_OK : 0);
    return errorOf(onExisting(path, [&](const char* actual) { return access(actual, test); }));
}

std::size_t pathLimit() {
    return PATH_MAX;
}

bool hasDriveLetters() {
    return false;
}

std::string absolutePath(const std::string& path) {
    if (path.starts_with('/')) return path;
    char folder[PATH_MAX];
    if (getcwd(folder, sizeof folder) == nullptr) return path;
    std::string result = folder;
    std::string_view rest = path;
    // Resolve leading dots here: the path from getcwd has no links, so its end may be cut off for "..".
    for (;;) {
        const std::string_view step = rest.substr(0, rest.find('/'));
        if (!step.empty() && step != "." && step != "..") break;
        if (step == "..") result.resize(result.rfind('/'));
        if (result.empty()) result.push_back('/');
        if (step.size() == rest.size()) return result;
        rest.remove_prefix(step.size() + 1);
    }
    if (!result.ends_with('/')) result += '/';
    return result.append(rest);
}

std::string temporaryFolder() {
    const char* folder = std::getenv("TMPDIR");
    std::string result = folder != nullptr && folder[0] == '/' ? folder : "/tmp";
    while (result.size() > 1 && result.back() == '/') result.pop_back();
    return result;
}

int makeFolder(const char* path) {
    if (stopped) return ECANCELED;
    const std::string actual = placeForNew(path);
    const int error = errorOf(mkdir(actual.c_str(), 0777));
    if (error == 0) noteMadeFolder(actual);
    return error;
}

int removeFolder(const char* path) {
    if (stopped) return ECANCELED;
    std::string removed = path;
    const int error = errorOf(onExisting(path, [&](const char* actual) {
        removed = actual;
        return rmdir(actual);
    }));
    if (error == 0) noteRemoved(removed);
    return error;
}

int listFolder(const char* path, std::vector<std::string>& names) {
    names.clear();
    if (stopped) return ECANCELED;
    DIR* listing = nullptr;
    const int result = onExisting(path, [&](const char* actual) {
        listing = opendir(actual);
        return listing == nullptr ? -1 : 0;
    });
    if (result != 0) return errno;
    const std::unique_ptr<DIR, int (*)(DIR*)> closing(listing, closedir);
    errno = 0;
    while (const dirent* entry = readdir(listing)) names.emplace_back(entry->d_name);
    const int error = errno;
    if (error != 0) {
        names.clear();
        return error;
    }
    std::sort(names.begin(), names.end(), nameComesBefore);
    return 0;
}

int openForReading(const char* path, FileMode, int& descriptor, FileStatus* opened) {
    descriptor = -1;
    if (stopped) return ECANCELED;
    const int file = onExisting(path, openWithoutTrace);
    if (file == -1) return errno;
    FileStatus status;
    if (const int error = getStatus(file, status); error != 0) return closeWith(file, error);
    if (status.kind != FileKind::regular) {
        return closeWith(file, status.kind == FileKind::folder ? EISDIR : EINVAL);
    }
    if (opened != nullptr) *opened = status;
    descriptor = file;
    return 0;
}

int openForWriting(const char* path, FileMode, unsigned permissions, const FileStatus* source,
                   int& descriptor, FileStatus* opened) {
    descriptor = -1;
    if (stopped) return ECANCELED;
    int file = -1;
    if (!isFolderKnown(path)) {
        file = open(path, O_WRONLY | kOpenFlags);
        if (file == -1 && errno != ENOENT) return errno;
    }
    std::string actual;
    bool isNew = false;
    if (file == -1) {
        const Spellings found = findSpellings(path);
        if (!found.hasFolder) return ENOENT;
        actual = found.existing();
        if (actual.empty()) {
            actual = found.asAsked;
            file = open(actual.c_str(), O_WRONLY | O_CREAT | O_EXCL | kOpenFlags, permissions);
            isNew = file != -1;
            if (!isNew && errno != EEXIST) return errno;
        }
        // An existing file is opened without O_CREAT: some systems refuse that for another user's file.
        if (!isNew) file = open(actual.c_str(), O_WRONLY | kOpenFlags);
        // A dangling link: make its target.
        if (file == -1 && errno == ENOENT) {
            file = open(actual.c_str(), O_WRONLY | O_CREAT | kOpenFlags, permissions);
        }
        if (file == -1) return errno;
    }
    FileStatus status;
    if (isNew) {
        noteMade(actual);
        status.kind = FileKind::regular;
        status.permissions = permissions;
    } else {
        int error = getStatus(file, status);
        if (error == 0 && status.kind != FileKind::regular) error = EINVAL;
        if (error == 0 && source != nullptr && isSameFile(*source, status)) error = EEXIST;
        if (error == 0 && status.size != 0) error = errorOf(ftruncate(file, 0));
        if (error != 0) return closeWith(file, error);
    }
    filesOpenedForWriting.fetch_add(1, std::memory_order_relaxed);
    if (opened != nullptr) *opened = status;
    descriptor = file;
    return 0;
}

int openTemporaryBeside(const char* path, FileMode, unsigned permissions, std::string& temporary,
                        int& descriptor) {
    static unsigned count = 0;
    temporary.clear();
    descriptor = -1;
    if (stopped) return ECANCELED;
    std::string place = placeIfThere(path);
    place.resize(place.rfind('/') + 1);
    // A short name, since the file's own may be as long as names can be. Only a file left by an earlier
    // process with this number can have it.
    static const std::string process = std::to_string(getpid());
    place += ".tvxconv-" + process + '-';
    for (int attempt = 0; attempt < 1000; ++attempt) {
        std::string name = place + std::to_string(count++);
        const int opened = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | kOpenFlags, permissions);
        if (opened != -1) {
            noteMade(name);
            temporary = std::move(name);
            descriptor = opened;
            return 0;
        }
        if (errno != EEXIST) return errno;
    }
    return EEXIST;
}

std::int64_t readSome(int descriptor, void* buffer, std::size_t size) {
    ssize_t result = -1;
    do {
        if (stopped) {
            errno = ECANCELED;
            return -1;
        }
        result = read(descriptor, buffer, size);
    } while (result == -1 && errno == EINTR);
    return result;
}

std::int64_t writeSome(int descriptor, const void* data, std::size_t size) {
    std::size_t written = 0;
    while (written < size) {
        if (stopped) {
            errno = ECANCELED;
            return -1;
        }
        const ssize_t result = write(descriptor, static_cast<const char*>(data) + written, size - written);
        if (result == -1 && errno == EINTR) continue;
        if (result == -1) return -1;
        if (result == 0) break;
        written += static_cast<std::size_t>(result);
    }
    return static_cast<std::int64_t>(written);
}

std::int64_t copySome(int from, int to, std::size_t size) {
    ssize_t result = -1;
    do {
        if (stopped) {
            errno = ECANCELED;
            return -1;
        }
        result = copy_file_range(from, nullptr, to, nullptr, size, 0);
    } while (result == -1 && errno == EINTR);
    if (result != -1) return result;
    switch (errno) {
        case EBADF:  // also a file that is open for appending
        case EXDEV:
        case EINVAL:
        case ENOSYS:
        case EOPNOTSUPP:
        case EPERM:
            return 0;
        default:
            return -1;
    }
}

int setChangeTime(int descriptor, const FileStatus& status) {
    const timespec times[] = {{0, UTIME_OMIT}, {status.changedAt, status.changedAtFraction}};
    return errorOf(futimens(descriptor, times));
}

int flushToDisk(int descriptor) {
    return errorOf(fsync(descriptor));
}

int closeFile(int descriptor) {
    return errorOf(close(descriptor));
}

int makeWritable(const char* path) {
    if (stopped) return ECANCELED;
    return errorOf(onExisting(path, [](const char* actual) {
        struct stat status {};
        if (stat(actual, &status) != 0) return -1;
        return (status.st_mode & S_IWUSR) != 0 ? 0 : chmod(actual, (status.st_mode & 07777U) | S_IWUSR);
    }));
}

int setPermissions(const char* path, unsigned permissions) {
    if (stopped) return ECANCELED;
    return errorOf(onExisting(path, [&](const char* actual) { return chmod(actual, permissions & 0777U); }));
}

int removeFile(const char* path) {
    if (stopped) return ECANCELED;
    const Spellings found = findSpellings(path);
    if (found.count > 1) return ENOTUNIQ;
    const std::string existing = found.existing();
    const std::string actual = existing.empty() ? path : existing;  // empty: it is gone
    const int error = errorOf(unlink(actual.c_str()));
    if (error == 0) noteRemoved(actual);
    return error;
}

int removeOpened(const char* path) {
    const std::string actual = followLinks(path);
    const int error = errorOf(unlink(actual.c_str()));
    if (error == 0) noteRemoved(actual);
    return error;
}

int replaceFile(const char* from, const char* to) {
    if (stopped) return ECANCELED;
    const std::string actual = placeIfThere(to);
    std::string moved = from;
    const int error = errorOf(onExisting(from, [&](const char* actualFrom) {
        moved = actualFrom;
        return std::rename(actualFrom, actual.c_str());
    }));
    if (error == 0) {
        noteRemoved(moved);
        noteMade(actual);
    }
    return error;
}

int linkFile(const char* from, const char* to) {
    if (stopped) return ECANCELED;
    const std::string actual = placeForNew(to);
    const int error =
        errorOf(onExisting(from, [&](const char* actualFrom) { return link(actualFrom, actual.c_str()); }));
    if (error == 0) noteMade(actual);
    return error;
}

void stopFiles() {
    stopped = true;
}

bool resumeFiles() {
    return stopped.exchange(false);
}

void keepNoFreeMemory() {
    constexpr int kLargePiece = 64 * 1024;
    mallopt(M_MMAP_THRESHOLD, kLargePiece);
}

std::uint64_t filesWritten() {
    return filesOpenedForWriting.load(std::memory_order_relaxed);
}

void* loadModule(const char* name) {
    const std::string fileName = std::string(name) + ".so";
    std::string folder = folderOfThisCode();
    if (!folder.empty()) {
        if (void* module = dlopen((folder + fileName).c_str(), RTLD_NOW | RTLD_LOCAL)) return module;
    }
    return dlopen(fileName.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* findSymbol(void* module, const char* name) {
    return dlsym(module, name);
}

void onInterrupt(void (*handler)()) {
    static void (*called)() = nullptr;
    called = handler;
    struct sigaction action {};
    action.sa_handler = [](int) { called(); };
    sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaction(number, &action, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

void keepGoingAtSizeLimit() {
    signal(SIGXFSZ, SIG_IGN);
}

bool isTerminal(int descriptor) {
    return isatty(descriptor) == 1;
}

bool toUtf8(const std::string& from, std::string& to) {
    to = from;
    return true;
}

bool fromUtf8(const std::string& from, std::string& to) {
    to = from;
    return true;
}

}  // namespace tvxconv::platform
