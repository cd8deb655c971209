// folderIndex.h
//
// Finds files ignoring letter case on a system that does not. posix.cpp asks here after a plain call has
// found no such file, and before it makes a new name.
//
// Most files that a conversion looks for are absent, and listing a folder of 100,000 names for each would
// take too long. While a platform::RememberedFolders object exists, the names of a folder are read once and
// kept in an index, and our own changes are entered there (noteMade, noteRemoved). Changes by other
// programs are not seen: before replacing or removing what the index found, check the disk. Without such an
// object nothing is kept between calls.

#pragma once

#include <string>

namespace tvxconv::platform {

// What a path names if letter case is ignored.
struct Spellings {
    bool hasFolder = false;  // the folder of the path's last component exists
    int count = 0;           // how many of its names equal that component ignoring ASCII case
    std::string asAsked;     // the path: its folders as spelled on disk, the last component as asked
    bool isThereAsAsked = false;
    std::string twin;  // the path of an entry in another spelling; empty if there is none

    // The entry that the path names: the one spelled as asked, else the only other one. Empty if none.
    std::string existing() const { return isThereAsAsked ? asAsked : count == 1 ? twin : std::string(); }
};

// Looks the path up. The name of a folder that may be entered but not listed is used as spelled.
Spellings findSpellings(const std::string& path);

// Whether the names of the path's folder are in the index, so that findSpellings is cheaper than a system
// call that fails.
bool isFolderKnown(const std::string& path);

// Notes that this process has made or removed an entry. `path` has its spelling on disk.
void noteMade(const std::string& path) noexcept;
void noteMadeFolder(const std::string& path) noexcept;
void noteRemoved(const std::string& path) noexcept;

// The order of names in a listing: ascending ignoring ASCII case, ties by byte, "." and ".." first.
bool nameComesBefore(const std::string& a, const std::string& b);

}  // namespace tvxconv::platform
