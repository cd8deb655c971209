// platform.h
//
// The operating system, as this project needs it: files, folders, loadable modules, the terminal.
// The header carries the contract; posix.cpp and windows.cpp keep it, and the build picks one.
// Nothing outside this folder includes a header of one system or asks which system it runs on.
//
// Paths are bytes in the code page of the host, zero-terminated, with "/" between components (on
// Windows "\" as well). A result of 0 is success; any other result is the system's error number,
// and unless a function says otherwise nothing has changed then.
//
// Letter case. The projects come from systems that ignore it, so every function here finds a file as
// those systems do, also where the file system tells "a" from "A": each component of a path as it is
// spelled, else the one entry that equals it when the case of ASCII letters is ignored. Several such
// entries, none as spelled, are none. A new name is made as spelled, but where its twin in another
// case exists the twin is used. removeFile is stricter, see there.

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
    std::uint64_t volume = 0;  // volume and number together tell two files apart
    std::uint64_t number = 0;
    std::int64_t changedAt = 0;          // when the content was last changed, in seconds since 1970
    std::int32_t changedAtFraction = 0;  // and nanoseconds
};

// Whether the two are one file on disk, under whatever names.
bool isSameFile(const FileStatus& a, const FileStatus& b);

// What the path names, links followed. On failure `status` is that of no file.
int getStatus(const char* path, FileStatus& status);
int getStatus(int descriptor, FileStatus& status);

// Returns `path` with each component spelled as on disk, or `path` unchanged if it does not exist.
std::string pathOnDisk(const std::string& path);

// The path of the file that a symbolic link leads to, as spelled on disk. `path` itself, as spelled on disk,
// when it is no link or leads nowhere.
std::string followLinks(const std::string& path);

// The runtime's access test: 0 existence, 2 write, 4 read.
int checkAccess(const char* path, int mode);

// The longest path that the system takes, its terminator included.
std::size_t pathLimit();

// Whether an absolute path begins with a drive ("C:/x"); where not, it begins with a single "/".
bool hasDriveLetters();

// `path` as seen from the root of the file system; a relative one is taken from the current folder.
// The path need not exist.
std::string absolutePath(const std::string& path);

// The folder for temporary files, without a slash at its end.
std::string temporaryFolder();

// --- folders ---

// Makes one folder, open to all that the process's mask lets in. EEXIST where it or its twin is there.
int makeFolder(const char* path);

// Removes an empty folder.
int removeFolder(const char* path);

// The names in a folder, "." and ".." among them, in ascending order ignoring ASCII case (ties: by
// byte), "." and ".." first. On failure `names` is empty.
int listFolder(const char* path, std::vector<std::string>& names);

// While one of these lives, the names of a folder that has to be searched are read once and kept, instead of
// read again for each file; see folderIndex.h. What others change in such a folder meanwhile may not be seen.
// An operation that looks for many files has one on its stack; the outermost one counts. Not locked: the
// functions of this header are for one thread at a time.
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

// Text mode translates line ends where the system's text files differ from "\n", and nowhere else.
enum class FileMode { binary, text };

// Opens a plain file for reading; anything else (a folder, a pipe, a device) fails. `opened`, where
// given, tells what was opened.
int openForReading(const char* path, FileMode mode, int& descriptor, FileStatus* opened = nullptr);

// Opens a plain file for writing from its start, emptied if it is there and made with `permissions`
// (less the process's mask) if not. Fails, and leaves the file alone, when it is the one that
// `source` tells of: a file is never emptied while it is being read. `source` may be null; `opened`,
// where given, tells what was opened, before it was emptied; of a new file, no more than its permissions, the
// process's mask not counted.
int openForWriting(const char* path, FileMode mode, unsigned permissions, const FileStatus* source,
                   int& descriptor, FileStatus* opened = nullptr);

// Makes a new file in the folder of `path`, under a name that no other file has, open for writing.
// `permissions` as with openForWriting.
int openTemporaryBeside(const char* path, FileMode mode, unsigned permissions, std::string& temporary,
                        int& descriptor);

// The bytes read or written, fewer than asked for where the file or the disk ends; -1 on failure.
std::int64_t readSome(int descriptor, void* buffer, std::size_t size);
std::int64_t writeSome(int descriptor, const void* data, std::size_t size);

// Lets the system move up to `size` bytes from one open file to another. The bytes moved; 0 at the
// end of the file and where the system cannot do it (the caller reads on to tell the two apart); -1
// on failure of either file.
std::int64_t copySome(int from, int to, std::size_t size);

// Gives an open file the change time of another one.
int setChangeTime(int descriptor, const FileStatus& status);

// Waits until what was written has reached the disk.
int flushToDisk(int descriptor);

// Closes; the error of a write that the system had put off shows here. The descriptor is gone in any case.
int closeFile(int descriptor);

// Adds the owner's right to write (on Windows: clears the read-only attribute) and takes nothing away.
int makeWritable(const char* path);

// Gives the file exactly these nine permission bits.
int setPermissions(const char* path, unsigned permissions);

// Removes one file. Where the folder holds two names that are equal ignoring ASCII case, nothing is
// removed and the call fails, even if one of them is spelled as asked: on the systems that the projects come
// from they would be one file, so nobody can say which of them is meant.
int removeFile(const char* path);

// Removes the file that openForWriting or openTemporaryBeside has opened under this path, whatever other
// names its folder holds. Works after stopFiles, too, so that no part is left behind.
int removeOpened(const char* path);

// Puts the file `from` in the place of `to`, whether or not `to` exists; both are on one volume.
// On failure both are as they were.
int replaceFile(const char* from, const char* to);

// Makes `to` a second name of the file `from`. Fails where `to` exists and where the file system
// has no such names.
int linkFile(const char* from, const char* to);

// --- stopping ---

// Makes every function above that opens, makes, removes, reads or writes (but removeOpened) fail from now on,
// so that a long run ends soon and in order; allowed from a signal handler. resumeFiles takes it back, and
// tells whether they were stopped.
void stopFiles();
bool resumeFiles();

// For a program, at its start: large pieces of memory go back to the system as soon as they are free.
void keepNoFreeMemory();

// How many files openForWriting has opened since the program or library was loaded. May be called on any
// thread.
std::uint64_t filesWritten();

// --- modules, signals, terminal ---

// Loads the module `name` (without the ending that the system gives to modules): from the folder of
// the program or library that this code is part of, else by the loader's own rules. Null on failure.
// A module stays loaded.
void* loadModule(const char* name);

// The address of a plain exported name in a loaded module; null where there is none.
void* findSymbol(void* module, const char* name);

// Has `handler` called when the user or the system asks the program to end (SIGINT, SIGTERM, SIGHUP; on
// Windows the console's events). The handler may only call stopFiles and set flags. From then on a
// reader that goes away shows as a failed write and no longer ends the program.
void onInterrupt(void (*handler)());

// For a program, at its start: a file that reaches the limit of the process on sizes of files shows as a
// failed write and does not end the program.
void keepGoingAtSizeLimit();

bool isTerminal(int descriptor);

// --- text ---

// Texts in the code page of the host, in which paths are, as UTF-8 and back. Where the host's is UTF-8 the
// bytes stay as they are and are not checked. False, with `to` empty, for a text that has no form on the
// other side.
bool toUtf8(const std::string& from, std::string& to);
bool fromUtf8(const std::string& from, std::string& to);

}  // namespace tvxconv::platform
