// windows.cpp
//
// platform.h for Windows, on the C runtime's descriptors and the byte-string functions of the system's API.
// The system itself ignores letter case, so no path is searched for here. The runtime fails with an errno
// value; errors of the API are turned into one, so that callers see one kind of number.

#include "platform/platform.h"

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX  // some compilers define it themselves
#define NOMINMAX
#endif
#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <string_view>

namespace tvxconv::platform {
namespace {

std::atomic<bool> stopped{false};
std::atomic<std::uint64_t> filesOpenedForWriting{0};
std::atomic<void (*)()> interruptHandler{nullptr};
static_assert(std::atomic<bool>::is_always_lock_free, "stopFiles is called from a signal handler");

int errorOf(int result) {
    return result == -1 ? errno : 0;
}

int closeWith(int descriptor, int error) {
    _close(descriptor);
    return error;
}

// The errno value for an error of the API; never 0.
int errorNumber(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
            return ENOENT;
        case ERROR_DIRECTORY:
            return ENOTDIR;
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return EACCES;
        case ERROR_WRITE_PROTECT:
            return EROFS;
        case ERROR_ALREADY_EXISTS:
        case ERROR_FILE_EXISTS:
            return EEXIST;
        case ERROR_NOT_SAME_DEVICE:
            return EXDEV;
        case ERROR_TOO_MANY_LINKS:
            return EMLINK;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return ENOSPC;
        case ERROR_TOO_MANY_OPEN_FILES:
            return EMFILE;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
            return ENOMEM;
        case ERROR_FILENAME_EXCED_RANGE:
            return ENAMETOOLONG;
        case ERROR_INVALID_FUNCTION:
        case ERROR_NOT_SUPPORTED:
            return ENOTSUP;
        case ERROR_INVALID_HANDLE:
            return EBADF;
        case ERROR_INVALID_PARAMETER:
            return EINVAL;
        default:
            return EIO;
    }
}

int errorOfCall(BOOL succeeded) {
    return succeeded ? 0 : errorNumber(GetLastError());
}

// The runtime may end the program if it gets a number that cannot be a descriptor.
bool canBeDescriptor(int descriptor) {
    if (descriptor >= 0) return true;
    errno = EBADF;
    return false;
}

bool isStopped() {
    if (!stopped) return false;
    errno = ECANCELED;
    return true;
}

int runtimeMode(FileMode mode) {
    return (mode == FileMode::text ? _O_TEXT : _O_BINARY) | _O_NOINHERIT;
}

// The system keeps only one of the nine bits: whether the owner may write.
int runtimePermissions(unsigned permissions) {
    return (permissions & 0200U) != 0 ? _S_IREAD | _S_IWRITE : _S_IREAD;
}

// The system counts tenths of a microsecond since 1601.
constexpr std::int64_t kFrom1601To1970 = 11644473600;
constexpr std::uint64_t kTicks = 10000000;

int statusOf(HANDLE handle, FileStatus& status) {
    SetLastError(NO_ERROR);
    const DWORD type = GetFileType(handle);
    if (type == FILE_TYPE_UNKNOWN && GetLastError() != NO_ERROR) return errorNumber(GetLastError());
    if (type != FILE_TYPE_DISK) {
        status.kind = FileKind::other;
        status.permissions = 0666;
        return 0;
    }
    BY_HANDLE_FILE_INFORMATION found{};
    if (!GetFileInformationByHandle(handle, &found)) return errorNumber(GetLastError());
    const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const bool isReadOnly = (found.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    status.kind = isFolder ? FileKind::folder : FileKind::regular;
    status.permissions = (isReadOnly ? 0444U : 0666U) | (isFolder ? 0111U : 0U);
    status.size = std::uint64_t{found.nFileSizeHigh} << 32U | found.nFileSizeLow;
    status.volume = found.dwVolumeSerialNumber;
    status.number = std::uint64_t{found.nFileIndexHigh} << 32U | found.nFileIndexLow;
    const std::uint64_t changedAt =
        std::uint64_t{found.ftLastWriteTime.dwHighDateTime} << 32U | found.ftLastWriteTime.dwLowDateTime;
    status.changedAt = static_cast<std::int64_t>(changedAt / kTicks) - kFrom1601To1970;
    status.changedAtFraction = static_cast<std::int32_t>(changedAt % kTicks * 100);
    return 0;
}

// Turns "\" into "/". In some code pages the second byte of a character looks like a "\" and is left alone.
std::string withForwardSlashes(std::string path) {
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (IsDBCSLeadByte(static_cast<BYTE>(path[i]))) {
            ++i;
        } else if (path[i] == '\\') {
            path[i] = '/';
        }
    }
    return path;
}

unsigned char foldCase(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value >= 'A' && value <= 'Z' ? static_cast<unsigned char>(value + ('a' - 'A')) : value;
}

bool nameComesBefore(const std::string& a, const std::string& b) {
    const auto rank = [](std::string_view name) { return name == "." ? 0 : name == ".." ? 1 : 2; };
    if (rank(a) != rank(b)) return rank(a) < rank(b);
    const auto foldedBefore = [](char x, char y) { return foldCase(x) < foldCase(y); };
    if (std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), foldedBefore)) return true;
    if (std::lexicographical_compare(b.begin(), b.end(), a.begin(), a.end(), foldedBefore)) return false;
    return a < b;
}

// The folder of the program or library that contains this code, with a separator at its end; empty if it
// cannot be found out.
std::string folderOfThisCode() {
    HMODULE self = nullptr;
    constexpr DWORD flags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExA(flags, reinterpret_cast<const char*>(&stopped), &self)) return {};
    char path[MAX_PATH];
    const DWORD length = GetModuleFileNameA(self, path, MAX_PATH);
    if (length == 0 || length == MAX_PATH) return {};
    // LoadLibraryA needs the system's own separators, so the path is cut but not changed.
    const std::string file(path, length);
    return file.substr(0, withForwardSlashes(file).rfind('/') + 1);
}

void passSignalOn(int number) {
    std::signal(number, passSignalOn);  // the runtime removes a handler before it calls it
    interruptHandler.load()();
}

BOOL WINAPI passConsoleEventOn(DWORD event) {
    interruptHandler.load()();
    // When the window closes, the user logs off or the machine shuts down, the program ends as soon as this
    // thread returns. The system waits a few seconds for it: leave them to the main thread.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
    return TRUE;
}

}  // namespace

bool isSameFile(const FileStatus& a, const FileStatus& b) {
    // Devices, and the files of some network volumes, have no number.
    return a.kind != FileKind::none && a.number != 0 && a.volume == b.volume && a.number == b.number;
}

int getStatus(const char* path, FileStatus& status) {
    status = FileStatus();
    // No access is requested, so the status of a file locked by another program can be read too; the flag
    // allows folders to be opened.
    const HANDLE handle = CreateFileA(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return errorNumber(GetLastError());
    const int error = statusOf(handle, status);
    CloseHandle(handle);
    return error;
}

int getStatus(int descriptor, FileStatus& status) {
    status = FileStatus();
    if (!canBeDescriptor(descriptor)) return errno;
    const std::intptr_t handle = _get_osfhandle(descriptor);
    return handle == -1 ? EBADF : statusOf(reinterpret_cast<HANDLE>(handle), status);
}

std::string followLinks(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return path;
    const HANDLE handle = CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return path;
    char target[MAX_PATH + 8];
    const DWORD length = GetFinalPathNameByHandleA(handle, target, sizeof target, FILE_NAME_NORMALIZED);
    CloseHandle(handle);
    if (length == 0 || length >= sizeof target) return path;
    std::string result(target, length);
    // The system gives long paths a prefix: \\?\C:\x, \\?\UNC\machine\x.
    if (result.starts_with("\\\\?\\UNC\\")) {
        result.replace(0, 8, "\\\\");
    } else if (result.starts_with("\\\\?\\")) {
        result.erase(0, 4);
    }
    return result;
}

std::string pathOnDisk(const std::string& path) {
    return path;
}

int checkAccess(const char* path, int mode) {
    return errorOf(_access(path, mode & 6));
}

std::size_t pathLimit() {
    return MAX_PATH;
}

bool hasDriveLetters() {
    return true;
}

std::string absolutePath(const std::string& path) {
    const char* asked = path.empty() ? "." : path.c_str();
    std::string result;
    DWORD needed = GetFullPathNameA(asked, 0, nullptr, nullptr);
    // The current folder, and so the length, may change between the calls.
    while (needed > result.size()) {
        result.resize(needed);
        needed = GetFullPathNameA(asked, needed, result.data(), nullptr);
    }
    if (needed == 0) return path;
    result.resize(needed);
    return withForwardSlashes(result);
}

std::string temporaryFolder() {
    char path[MAX_PATH + 1];
    const DWORD length = GetTempPathA(sizeof path, path);
    if (length == 0 || length >= sizeof path) return absolutePath(".");
    std::string result = withForwardSlashes(std::string(path, length));
    while (result.ends_with('/')) result.pop_back();
    return result;
}

int makeFolder(const char* path) {
    if (isStopped()) return ECANCELED;
    return errorOf(_mkdir(path));
}

int removeFolder(const char* path) {
    if (isStopped()) return ECANCELED;
    return errorOf(_rmdir(path));
}

int listFolder(const char* path, std::vector<std::string>& names) {
    names.clear();
    if (isStopped()) return ECANCELED;
    std::string pattern = withForwardSlashes(path);
    if (pattern.empty()) return ENOENT;
    if (!pattern.ends_with('/') && !pattern.ends_with(':')) pattern += '/';
    pattern += '*';

    // A drive's root lists neither of these, and an empty drive lists nothing at all.
    names = {".", ".."};
    const auto isListed = [](std::string_view name) { return name == "." || name == ".."; };
    WIN32_FIND_DATAA entry{};
    const HANDLE search = FindFirstFileA(pattern.c_str(), &entry);
    DWORD error = ERROR_SUCCESS;
    if (search == INVALID_HANDLE_VALUE) {
        error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND) return 0;  // a missing folder is ERROR_PATH_NOT_FOUND
    } else {
        do {
            if (!isListed(entry.cFileName)) names.emplace_back(entry.cFileName);
        } while (FindNextFileA(search, &entry));
        error = GetLastError();
        FindClose(search);
        if (error == ERROR_NO_MORE_FILES) error = ERROR_SUCCESS;
    }
    if (error != ERROR_SUCCESS) {
        names.clear();
        return errorNumber(error);
    }
    std::sort(names.begin(), names.end(), nameComesBefore);
    return 0;
}

// The system itself finds names in any case: nothing to remember.
struct RememberedFolders::Index {};
RememberedFolders::RememberedFolders() = default;
RememberedFolders::~RememberedFolders() = default;

int openForReading(const char* path, FileMode mode, int& descriptor, FileStatus* opened) {
    descriptor = -1;
    if (isStopped()) return ECANCELED;
    const int file = _open(path, _O_RDONLY | runtimeMode(mode));
    if (file == -1) return errno;
    FileStatus status;
    if (const int error = getStatus(file, status)) return closeWith(file, error);
    if (status.kind != FileKind::regular) return closeWith(file, EINVAL);
    if (opened != nullptr) *opened = status;
    descriptor = file;
    return 0;
}

int openForWriting(const char* path, FileMode mode, unsigned permissions, const FileStatus* source,
                   int& descriptor, FileStatus* opened) {
    descriptor = -1;
    if (isStopped()) return ECANCELED;
    const int file = _open(path, _O_WRONLY | _O_CREAT | runtimeMode(mode), runtimePermissions(permissions));
    if (file == -1) return errno;
    FileStatus status;
    if (const int error = getStatus(file, status)) return closeWith(file, error);
    if (status.kind != FileKind::regular) return closeWith(file, EINVAL);
    if (source != nullptr && isSameFile(*source, status)) return closeWith(file, EEXIST);
    if (status.size != 0) {
        if (const int error = _chsize_s(file, 0)) return closeWith(file, error);
    }
    filesOpenedForWriting.fetch_add(1, std::memory_order_relaxed);
    if (opened != nullptr) *opened = status;
    descriptor = file;
    return 0;
}

int openTemporaryBeside(const char* path, FileMode mode, unsigned permissions, std::string& temporary,
                        int& descriptor) {
    static unsigned count = 0;
    temporary.clear();
    descriptor = -1;
    if (isStopped()) return ECANCELED;
    std::string place = withForwardSlashes(path);
    place.resize(place.rfind('/') + 1);
    // A short name, since the file's own may be as long as names can be. Only a file left by an earlier
    // process with this number can have it.
    place += ".tvxconv-" + std::to_string(GetCurrentProcessId()) + '-';
    for (int attempt = 0; attempt < 1000; ++attempt) {
        std::string name = place + std::to_string(count++);
        const int opened = _open(name.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | runtimeMode(mode),
                                 runtimePermissions(permissions));
        if (opened != -1) {
            temporary = std::move(name);
            descriptor = opened;
            return 0;
        }
        if (errno != EEXIST) return errno;
    }
    return EEXIST;
}

// The runtime counts bytes in an int, and in text mode reads fewer than asked for if it has dropped a "\r":
// both loops go on until the size is reached or nothing more comes.
constexpr std::size_t largestPiece = std::size_t{1} << 30U;

std::int64_t readSome(int descriptor, void* buffer, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        if (isStopped() || !canBeDescriptor(descriptor)) return -1;
        const auto piece = static_cast<unsigned>(std::min(size - done, largestPiece));
        const int result = _read(descriptor, static_cast<char*>(buffer) + done, piece);
        if (result < 0) return -1;
        if (result == 0) break;
        done += static_cast<std::size_t>(result);
    }
    return static_cast<std::int64_t>(done);
}

std::int64_t writeSome(int descriptor, const void* data, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        if (isStopped() || !canBeDescriptor(descriptor)) return -1;
        const auto piece = static_cast<unsigned>(std::min(size - done, largestPiece));
        const int result = _write(descriptor, static_cast<const char*>(data) + done, piece);
        if (result < 0) return -1;
        if (result == 0) break;
        done += static_cast<std::size_t>(result);
    }
    return static_cast<std::int64_t>(done);
}

std::int64_t copySome(int, int, std::size_t) {
    return isStopped() ? -1 : 0;  // the system copies by name only, not between open files
}

int setChangeTime(int descriptor, const FileStatus& status) {
    if (!canBeDescriptor(descriptor)) return EBADF;
    const std::uint64_t ticks = static_cast<std::uint64_t>(status.changedAt + kFrom1601To1970) * kTicks +
                                static_cast<std::uint64_t>(status.changedAtFraction) / 100;
    const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    return errorOfCall(SetFileTime(handle, nullptr, nullptr, &time));
}

int flushToDisk(int descriptor) {
    return canBeDescriptor(descriptor) ? errorOf(_commit(descriptor)) : EBADF;
}

int closeFile(int descriptor) {
    return canBeDescriptor(descriptor) ? errorOf(_close(descriptor)) : EBADF;
}

int makeWritable(const char* path) {
    if (isStopped()) return ECANCELED;
    return errorOf(_chmod(path, _S_IREAD | _S_IWRITE));
}

int setPermissions(const char* path, unsigned permissions) {
    if (isStopped()) return ECANCELED;
    return errorOf(_chmod(path, runtimePermissions(permissions)));
}

int removeFile(const char* path) {
    if (isStopped()) return ECANCELED;
    return errorOf(_unlink(path));
}

int removeOpened(const char* path) {
    const std::string file = followLinks(path);
    _chmod(file.c_str(), _S_IREAD | _S_IWRITE);  // otherwise a copy of a read-only file cannot be removed
    return errorOf(_unlink(file.c_str()));
}

int replaceFile(const char* from, const char* to) {
    if (isStopped()) return ECANCELED;
    return errorOfCall(MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING));  // rename refuses an existing file
}

int linkFile(const char* from, const char* to) {
    if (isStopped()) return ECANCELED;
    return errorOfCall(CreateHardLinkA(to, from, nullptr));
}

void stopFiles() {
    stopped = true;
}

bool resumeFiles() {
    return stopped.exchange(false);
}

void keepNoFreeMemory() {}

std::uint64_t filesWritten() {
    return filesOpenedForWriting.load(std::memory_order_relaxed);
}

void* loadModule(const char* name) {
    const std::string fileName = std::string(name) + ".dll";
    const std::string folder = folderOfThisCode();
    // Otherwise the system may show the user a window about a damaged module.
    DWORD oldMode = 0;
    SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &oldMode);
    HMODULE module = nullptr;
    if (!folder.empty()) module = LoadLibraryA((folder + fileName).c_str());
    if (module == nullptr) module = LoadLibraryA(fileName.c_str());
    SetThreadErrorMode(oldMode, nullptr);
    return module;
}

void* findSymbol(void* module, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void onInterrupt(void (*handler)()) {
    const bool isFirst = interruptHandler.exchange(handler) == nullptr;
    if (!isFirst) return;
    for (const int number : {SIGINT, SIGTERM}) std::signal(number, passSignalOn);
    // After the signals: the handler set last is called first, and the runtime has its own.
    SetConsoleCtrlHandler(passConsoleEventOn, TRUE);
}

bool isTerminal(int descriptor) {
    if (!canBeDescriptor(descriptor) || !_isatty(descriptor)) return false;
    DWORD mode = 0;  // the runtime takes the null device for a terminal, but it has no console mode
    return GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), &mode) != 0;
}

void keepGoingAtSizeLimit() {}  // there is no such limit

namespace {

// Converts between code pages by way of the system's own characters. A text with a character that has no
// equivalent fails: it is not replaced by one that looks alike.
bool convertText(UINT fromPage, const std::string& from, UINT toPage, std::string& to) {
    to.clear();
    if (from.empty()) return true;
    const int size = static_cast<int>(from.size());
    const int wideSize = MultiByteToWideChar(fromPage, MB_ERR_INVALID_CHARS, from.data(), size, nullptr, 0);
    if (wideSize == 0) return false;
    std::wstring wide(static_cast<std::size_t>(wideSize), L'\0');
    MultiByteToWideChar(fromPage, MB_ERR_INVALID_CHARS, from.data(), size, wide.data(), wideSize);
    // The host's own code page may be UTF-8, too.
    const bool toUnicode = toPage == CP_UTF8 || GetACP() == CP_UTF8;
    const DWORD flags = toUnicode ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
    BOOL isReplaced = FALSE;
    BOOL* const replaced = toUnicode ? nullptr : &isReplaced;
    const int toSize =
        WideCharToMultiByte(toPage, flags, wide.data(), wideSize, nullptr, 0, nullptr, replaced);
    if (toSize == 0 || isReplaced) return false;
    to.resize(static_cast<std::size_t>(toSize));
    WideCharToMultiByte(toPage, flags, wide.data(), wideSize, to.data(), toSize, nullptr, nullptr);
    return true;
}

}  // namespace

bool toUtf8(const std::string& from, std::string& to) {
    return convertText(CP_ACP, from, CP_UTF8, to);
}

bool fromUtf8(const std::string& from, std::string& to) {
    return convertText(CP_UTF8, from, CP_ACP, to);
}

}  // namespace tvxconv::platform
