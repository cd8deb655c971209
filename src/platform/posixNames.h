// posixNames.h
//
// Finding files as a system does that ignores letter case, on one that does not. posix.cpp asks here
// only after a plain call has said that there is no such file, or before it makes a new name, so a
// path that is spelled right costs nothing.
//
// A folder that was asked about is remembered as an index of its names: most files that a conversion
// looks for are absent, and reading a folder of 100,000 names for each of them would never end. The
// index follows what this process makes and removes (noteMade, noteRemoved), and is read anew when
// the folder's time of change says that somebody else was there.
//
// All paths are plain text for the system's calls; an `actual` path is spelled as on disk.

#pragma once

#include <string>

namespace tvxconv::platform {

// The existing entry that `path` means, when no entry is spelled as `path` is. False, with `actual`
// unspecified, when there is none, or several that differ only in case, or when it exists as spelled.
bool findOtherSpelling(const std::string& path, std::string& actual);

// Where a new entry called `path` belongs: in the folder that exists, under the name of its twin in
// another case if there is one, else as spelled. False when the folder does not exist. `isNew`, where
// given, tells that nothing is there yet.
bool findPlaceForNew(const std::string& path, std::string& actual, bool* isNew = nullptr);

// Whether the folder of `path` is the one that any of these functions looked at last: looking there
// again is cheaper than a call that fails.
bool isInFolderAskedLast(const std::string& path);

// How many entries of its folder equal the last component of `path` ignoring case (0 when the folder
// is not there); with exactly one, `actual` is that entry's path.
int countSpellings(const std::string& path, std::string& actual);

// An entry has been made or removed by this process, under its `actual` path.
void noteMade(const std::string& actual) noexcept;
void noteRemoved(const std::string& actual) noexcept;

// The same for an entry whose folder was not looked at just before: what is known of it is dropped.
void noteChangeUnseen(const std::string& actual) noexcept;

// The order of names in a listing: ascending ignoring ASCII case, ties by byte, "." and ".." first.
bool nameComesBefore(const std::string& a, const std::string& b);

}  // namespace tvxconv::platform
