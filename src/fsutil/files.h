// files.h
//
// Files and folders: what exists, making folders, copying, deleting, listing. Text files are read and
// written in lines.h, large ones in TextFile.h; all other access to the disk goes through here.
//
// The low layer works like a C runtime: zero-terminated paths, 0 for success, a negative value for failure.
// The string layer above it, which the conversions call, returns 0 for success and 1 for failure. Errors
// are not recorded here (except by createDirectories): only the caller knows which message fits. Paths are
// absolute or relative to the current folder, with either slash on Windows. A path with a NUL in it names
// nothing.

#pragma once

#include <cstdint>
#include <string>

#include "platform/platform.h"

namespace tvxconv::fsutil {

// Put one on the stack of an operation that looks for many files; see platform.h.
using platform::RememberedFolders;

// --- low layer ---

constexpr int kFolderMask = 0x4000;
constexpr int kRegularFileMask = 0x8000;
constexpr int kExists = 0;
constexpr int kWritable = 2;
constexpr int kReadable = 4;

// The names of one folder, read when it was opened. The caller owns it and passes it to
// closeDirectoryListing.
struct DirectoryListing;

// One name of a listing. The process has one such record: the next call of nextDirectoryEntry overwrites
// it. The name belongs to the listing.
struct DirectoryEntry {
    std::uint16_t number = 0;        // from 1
    std::uint16_t recordLength = 0;  // both lengths are those of the name
    std::uint16_t nameLength = 0;
    const char* name = nullptr;
};

// Checks for a type (a mask above, or 0 for any) and an access (0 existence, 2 write, 4 read). Returns 0 if
// the path has both, else -1.
int checkPath(const char* path, int typeMask, int accessMode);

// Makes one folder. Separators at the end of the path are ignored, and so is `mode`. Returns 0, or -1 if
// the path is empty or only separators, exists, or has no parent folder.
int makeDirectory(const char* path, int mode);

// Appends the bytes of the file `source` to an open file. Returns 0, or -1 if the source cannot be opened,
// a read fails or a write falls short; what was written until then stays.
int copyStream(const char* source, int descriptor);

// Copies a plain file with the time of its last change. An existing destination keeps its permission bits,
// a new one gets the source's. Returns 0, or -1 if the source does not exist or is no plain file, if both
// are the same file, or if opening, reading, writing or closing fails. A destination that was already
// opened then stays, partly written.
int copyFileContents(const char* source, const char* destination);

// Reads the names of a folder, including "." and "..", in ascending order ignoring case. Null if the path
// is no folder or cannot be read.
DirectoryListing* openDirectoryListing(const char* path);

// The next name, or null when there are no more.
DirectoryEntry* nextDirectoryEntry(DirectoryListing* listing);

// Frees the listing with its names. Returns 0.
int closeDirectoryListing(DirectoryListing* listing);

// --- string layer ---

// Whether the text can be a path. With a NUL in it, it would name another file than it seems to.
bool isPathText(const std::string& path);

// Set `flag` to whether `path` is an existing folder, or plain file, that may be read. Return 0.
int isDirectory(const std::string& path, bool& flag);
int isRegularFile(const std::string& path, bool& flag);

// The same as isRegularFile, as a return value.
bool isPresentFile(const std::string& path);

// Whether both paths lead, perhaps through links, to the same existing file or folder.
bool isSameFile(const std::string& a, const std::string& b);

// Whether the path is a symbolic link to something that exists.
bool isLink(const std::string& path);

// Makes the folder, one level, if nothing exists at the path. Whatever exists there must be writable (a
// writable plain file passes too). Returns 0 or 1.
int ensureDirectory(const std::string& path);

// Makes every missing folder along `path`. Returns 0, or ERR_CREATE_DIRECTORY, which it has reported with
// the folder that could not be made; those made before it stay.
int createDirectories(const std::string& path);

// Copies a file with the time of its last change and makes the copy writable. Returns 0, also if both paths
// are equal ignoring case or name the same file, when nothing is done; 1 if the copy fails or cannot be
// made writable. A copy that fails half-way stays.
int copyFile(const std::string& source, const std::string& destination);

// The same, but a copy that fails half-way is removed, so that nobody takes it for the whole file.
int copyWholeFile(const std::string& source, const std::string& destination);

// copyWholeFile for a source that may be absent: `isPresent` becomes what isRegularFile would answer. If
// false, nothing is done and 0 returned. Cheaper than asking first.
int copyWholeFileIfPresent(const std::string& source, const std::string& destination, bool& isPresent);

// Returns 0, or 1 if the file does not exist, cannot be removed, or is one of several in its folder whose
// names are equal ignoring case (then none of them is removed).
int deleteFile(const std::string& path);

// The names in a folder, one by one. openDirectory returns 0, or 1 with `handle` null; readDirectory
// returns 0, or 1 with `name` empty when there are no more; closeDirectory returns 0.
int openDirectory(const std::string& path, DirectoryListing*& handle);
int readDirectory(DirectoryListing* handle, std::string& name);
int closeDirectory(DirectoryListing* handle);

}  // namespace tvxconv::fsutil
