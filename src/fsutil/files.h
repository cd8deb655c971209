// files.h
//
// Files and folders: what is there, making folders, copying, deleting, listing. Text files are read and
// written in lines.h, large ones in TextFile.h; all else that touches the disk comes through here.
//
// The low layer speaks like a C runtime: zero-terminated paths, 0 for success, a negative value for
// failure. The string layer above it, which the conversions call, returns 0 for success and 1 for
// failure. Neither records an error, with one exception (createDirectories): the caller knows which
// message fits. Paths are absolute or relative to the current folder, with either slash on Windows.
// A path with a NUL in it names nothing.

#pragma once

#include <cstdint>
#include <string>

#include "platform/platform.h"

namespace tvxconv::fsutil {

// On the stack of an operation that looks for many files; see platform.h.
using platform::RememberedFolders;

// --- low layer ---

constexpr int kFolderMask = 0x4000;
constexpr int kRegularFileMask = 0x8000;
constexpr int kExists = 0;
constexpr int kWritable = 2;
constexpr int kReadable = 4;

// The names of one folder, read when it was opened. Owned by the caller, who gives it back to
// closeDirectoryListing.
struct DirectoryListing;

// One name of a listing. There is one record in the process: the next call of nextDirectoryEntry
// overwrites it, and the name belongs to the listing.
struct DirectoryEntry {
    std::uint16_t number = 0;        // from 1
    std::uint16_t recordLength = 0;  // both lengths are that of the name
    std::uint16_t nameLength = 0;
    const char* name = nullptr;
};

// Asks for a type (a mask above, or 0 for any) and for an access (0 existence, 2 write, 4 read).
// Returns 0 when the path has both, else -1.
int checkPath(const char* path, int typeMask, int accessMode);

// Makes one folder; separators at the end of the path are passed over, `mode` is taken and not used.
// Returns 0, or -1 where the path is empty or only separators, exists, or has no parent folder.
int makeDirectory(const char* path, int mode);

// Appends the bytes of the file `source` to an open file. Returns 0, or -1 when the source cannot be
// opened, a read fails or a write falls short; what was written by then stays.
int copyStream(const char* source, int descriptor);

// Copies a plain file with the time of its last change. An existing destination keeps its permission bits, a
// new one takes the source's. Returns 0, or -1 when the source is not there or no plain file, when both are
// the same file, or when opening, reading, writing or closing fails. A destination that was opened by then
// stays, partly written.
int copyFileContents(const char* source, const char* destination);

// Reads the names of a folder, "." and ".." among them, in ascending order ignoring case. Null when
// the path is no folder or cannot be read.
DirectoryListing* openDirectoryListing(const char* path);

// The next name, or null when there are no more.
DirectoryEntry* nextDirectoryEntry(DirectoryListing* listing);

// Frees the listing with its names. Returns 0.
int closeDirectoryListing(DirectoryListing* listing);

// --- string layer ---

// Whether the text can be a path at all: one with a NUL would name another file than it seems to.
bool isPathText(const std::string& path);

// `flag` tells whether `path` is an existing folder, or plain file, that may be read. Return 0.
int isDirectory(const std::string& path, bool& flag);
int isRegularFile(const std::string& path, bool& flag);

// isRegularFile as an answer.
bool isPresentFile(const std::string& path);

// Whether both paths name one file or folder that is there, be it through links.
bool isSameFile(const std::string& a, const std::string& b);

// Whether the path is that of a symbolic link which leads to something.
bool isLink(const std::string& path);

// Makes the folder, one level, where nothing is there; what is there must be writable (a writable
// plain file passes too). Returns 0 or 1.
int ensureDirectory(const std::string& path);

// Makes every missing folder along `path`. Returns 0, or ERR_CREATE_DIRECTORY, which it has reported
// with the folder that could not be made; those made before it stay.
int createDirectories(const std::string& path);

// Copies a file with the time of its last change and makes the copy writable. Returns 0, also where both
// paths are equal ignoring case or name one file and nothing is done; 1 when the copy fails or cannot be made
// writable. A copy that fails half-way stays.
int copyFile(const std::string& source, const std::string& destination);

// The same, but a copy that fails half-way is removed: nobody takes a part for the whole.
int copyWholeFile(const std::string& source, const std::string& destination);

// copyWholeFile for a source that may be absent: `isPresent` tells whether it is a plain file that may be
// read, as isRegularFile would; when not, nothing is done and 0 returned. Cheaper than asking first.
int copyWholeFileIfPresent(const std::string& source, const std::string& destination, bool& isPresent);

// Returns 0, or 1 when the file is not there, cannot be removed, or is one of several in its folder
// whose names are equal ignoring case (none of them is removed then).
int deleteFile(const std::string& path);

// A folder's names one by one. openDirectory returns 0, or 1 with `handle` null; readDirectory returns
// 0, or 1 with `name` empty when there are no more; closeDirectory returns 0.
int openDirectory(const std::string& path, DirectoryListing*& handle);
int readDirectory(DirectoryListing* handle, std::string& name);
int closeDirectory(DirectoryListing* handle);

}  // namespace tvxconv::fsutil
