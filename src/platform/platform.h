// platform.h
//
// The operating system, as this project needs it: files, folders, loadable modules, the terminal.
// The header carries the contract; posix.cpp and windows.cpp keep it, and the build picks one.
// Nothing outside this folder includes a header of one system or asks which system it runs on.
//
// Paths are bytes in the code page of the host, zero-terminated, with "/" between components (on Windows
// "\" as well). A result of 0 is success; any other result is the system's error number, and then nothing
// has changed, unless a function says otherwise.
//
// Letter case. The projects come from systems that ignore it, so every function here does the same, also
// where the file system distinguishes "a" from "A": each component of a path is matched as spelled, else
// with the one entry that equals it ignoring the case of ASCII letters. If there are several such entries
// and none as spelled, nothing is found. A new name is made as spelled, but if its twin in another case
// exists, the twin is used. removeFile is stricter, see there.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace tvxconv::platform {

enum class FileKind { none, regular, folder, other };

struct FileStatus {
    FileKind kind = FileKind::none;
    unsigned permissions = 0;  // the nine permission bits, as in octal 0644
    std::uint64_t size = 0;    // bytes
    std::uint64_t volume = 0;  // volume and number together identify a file
    std::uint64_t number = 0;
    std::int64_t changedAt = 0;          // when the content was last changed, in seconds since 1970
    std::int32_t changedAtFraction = 0;  // and nanoseconds
};

// Whether both are the same file on disk, whatever the paths.
bool isSameFile(const FileStatus& a, const FileStatus& b);

// The status of what the path names, links followed. On failure `status` is that of no file.
int getStatus(const char* path, FileStatus& status);
int getStatus(int descriptor, FileStatus& status);

// Returns `path` with each component spelled as on disk, or `path` unchanged if it does not exist.
std::string pathOnDisk(const std::string& path);

// Returns the path of the file that a symbolic link leads to, as spelled on disk. If `path` is no link or
// leads nowhere, returns `path` itself as spelled on disk.
std::string followLinks(const std::string& path);

// The runtime's access test: 0 existence, 2 write, 4 read.
int checkAccess(const char* path, int mode);

// The longest path that the system accepts, including its terminator.
std::size_t pathLimit();

// Whether absolute paths begin with a drive ("C:/x"); if not, with a single "/".
bool hasDriveLetters();

// Makes a path absolute; a relative one is taken from the current folder. The path need not exist.
std::string absolutePath(const std::string& path);

// The folder for temporary files, without a slash at its end.
std::string temporaryFolder();

// --- folders ---

// Makes one folder, with all permissions that the process's mask allows. EEXIST if it or its twin exists.
int makeFolder(const char* path);

// Removes an empty folder.
int removeFolder(const char* path);

// The names in a folder, including "." and "..", in ascending order ignoring ASCII case (ties: by byte),
// "." and ".." first. On failure `names` is empty.
int listFolder(const char* path, std::vector<std::string>& names);

// While one of these exists, the names of a folder that has to be searched are read once and kept, not read
// again for each file; see folderIndex.h. Changes by other programs in such a folder may not be seen. An
// operation that looks for many files puts one on its stack; the outermost one counts. Not locked: use the
// functions of this header on one thread at a time.
class RememberedFolders {
public:
    RememberedFolders();
    ~RememberedFolders();
    RememberedFolders(const RememberedFolders&) = delete;
    RememberedFolders& operator=(const RememberedFolders&) = delete;

private:
    struct Index;
    std::unique_ptr<Index> index_;
};

// --- files ---

// Text mode translates line ends on systems whose text files do not use "\n", and nowhere else.
enum class FileMode { binary, text };

// Opens a plain file for reading; anything else (a folder, a pipe, a device) fails. `opened`, if given,
// gets the status of the file.
int openForReading(const char* path, FileMode mode, int& descriptor, FileStatus* opened = nullptr);

// Opens a plain file for writing from its start. An existing file is emptied; a new one gets `permissions`
// (minus the process's mask). Fails, and leaves the file alone, if it is the file described by `source`: a
// file is never emptied while it is being read. `source` may be null. `opened`, if given, gets the status
// of the file before it was emptied; of a new file only `permissions`, without the mask.
int openForWriting(const char* path, FileMode mode, unsigned permissions, const FileStatus* source,
                   int& descriptor, FileStatus* opened = nullptr);

// Makes a new file in the folder of `path`, with a name that no other file has, and opens it for writing.
// `permissions` as with openForWriting.
int openTemporaryBeside(const char* path, FileMode mode, unsigned permissions, std::string& temporary,
                        int& descriptor);

// Return the number of bytes read or written, fewer than asked for if the file or the disk ends; -1 on
// failure.
std::int64_t readSome(int descriptor, void* buffer, std::size_t size);
std::int64_t writeSome(int descriptor, const void* data, std::size_t size);

// Lets the system move up to `size` bytes from one open file to another. Returns the number of bytes moved;
// 0 at the end of the file and if the system cannot do it (the caller reads on to find out which); -1 if
// either file fails.
std::int64_t copySome(int from, int to, std::size_t size);

// Gives an open file the change time in `status`.
int setChangeTime(int descriptor, const FileStatus& status);

// Waits until everything written has reached the disk.
int flushToDisk(int descriptor);

// Closes; an error of a delayed write shows here. The descriptor is closed in any case.
int closeFile(int descriptor);

// Gives the owner the right to write (on Windows: clears the read-only attribute) and removes no other right.
int makeWritable(const char* path);

// Gives the file exactly these nine permission bits.
int setPermissions(const char* path, unsigned permissions);

// Removes one file. If the folder has two names that are equal ignoring ASCII case, the call fails and
// removes nothing, even if one of them is spelled as asked: on the systems that the projects come from they
// would be one file, so it is not clear which one is meant.
int removeFile(const char* path);

// Removes the file that openForWriting or openTemporaryBeside has opened under this path, whatever other
// names its folder has. Also works after stopFiles, so that no incomplete file stays.
int removeOpened(const char* path);

// Moves the file `from` to `to`, replacing what is there; both are on one volume. On failure both are
// unchanged.
int replaceFile(const char* from, const char* to);

// Makes `to` a second name of the file `from`. Fails if `to` exists or the file system has no second names.
int linkFile(const char* from, const char* to);

// --- stopping ---

// Makes every function above that opens, makes, removes, reads or writes (except removeOpened) fail from
// now on, so that a long run ends soon and in order. May be called from a signal handler. resumeFiles ends
// this and returns whether they were stopped.
void stopFiles();
bool resumeFiles();

// For a program to call at its start: large blocks of memory go back to the system as soon as they are free.
void keepNoFreeMemory();

// The number of files that openForWriting has opened since the program or library was loaded. May be called
// on any thread.
std::uint64_t filesWritten();

// --- modules, signals, terminal ---

// Loads the module `name` (without the system's ending for modules): from the folder of the program or
// library that contains this code, else by the loader's own rules. Null on failure. A module stays loaded.
void* loadModule(const char* name);

// The address of an exported C name in a loaded module; null if there is none.
void* findSymbol(void* module, const char* name);

// Calls `handler` when the user or the system asks the program to end (SIGINT, SIGTERM, SIGHUP; on Windows
// console events). The handler may only call stopFiles and set flags. From then on a closed pipe shows as a
// failed write and no longer ends the program.
void onInterrupt(void (*handler)());

// For a program to call at its start: reaching the process's limit on file size shows as a failed write and
// does not end the program.
void keepGoingAtSizeLimit();

bool isTerminal(int descriptor);

// --- text ---

// Converts texts, such as paths, from the code page of the host to UTF-8 and back. If the host's is UTF-8
// the bytes stay unchanged and are not checked. False, with `to` empty, if the text cannot be converted.
bool toUtf8(const std::string& from, std::string& to);
bool fromUtf8(const std::string& from, std::string& to);

}  // namespace tvxconv::platform
