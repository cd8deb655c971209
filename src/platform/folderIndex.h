// folderIndex.h
//
// Finds files as a system does that ignores letter case, on one that does not. posix.cpp asks here when a
// plain call has said that there is no such file, and before it makes a new name.
//
// Most files that a conversion looks for are absent, and listing a folder of 100,000 names for each of them
// would never end. While an object of platform::RememberedFolders lives, the names of a folder are read once
// and kept in an index, and our own changes are entered there (noteMade, noteRemoved). What other programs
// change meanwhile is not seen: whoever replaces or removes something on the word of the index checks the
// disk first. Without such an object nothing is kept from one question to the next.

#pragma once

#include <string>

namespace tvxconv::platform {

// What a path means where letter case is ignored.
struct Spellings {
    bool hasFolder = false;  // the folder that the path's last component is in exists
    int count = 0;           // how many of its names equal that component ignoring ASCII case
    std::string asAsked;     // the path: its folders as spelled on disk, the last component as asked
    bool isThereAsAsked = false;
    std::string twin;  // the path of an entry that is spelled otherwise; empty if there is none

    // The entry that the path means: the one spelled as asked, else the only other one. Empty if none.
    std::string existing() const { return isThereAsAsked ? asAsked : count == 1 ? twin : std::string(); }
};

// Looks the path up. A folder on the way that may be entered but not listed is taken as it is spelled.
Spellings findSpellings(const std::string& path);

// Whether the names of the path's folder are at hand, so that asking findSpellings is cheaper than a system
// call that fails.
bool isFolderKnown(const std::string& path);

// An entry has been made or removed by this process, under its spelling on disk.
void noteMade(const std::string& path) noexcept;
void noteMadeFolder(const std::string& path) noexcept;
void noteRemoved(const std::string& path) noexcept;

// The order of names in a listing: ascending ignoring ASCII case, ties by byte, "." and ".." first.
bool nameComesBefore(const std::string& a, const std::string& b);

}  // namespace tvxconv::platform
