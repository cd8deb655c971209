// structure.h
//
// The new structure as lines of text: a folder by its path, its files indented below it. What a host shows
// after a conversion, and the report file that keeps it.

#pragma once

#include <string>
#include <vector>

namespace tvxconv {

// What stands before the name of a file.
constexpr const char* kIndent = "    ";

// Appends the path of a folder and, indented, the names of its files. An entry counts as a folder when
// its name has no "."; those go to `subFolders`, by name. A name that ends in its first "." is left out.
// False, with nothing appended, when the folder cannot be listed.
bool listFolder(const std::string& folder, std::vector<std::string>& lines,
                std::vector<std::string>& subFolders);

// Writes the lines under a heading to the file `path`, in the place of one that is there. Returns 0, or
// ERR_OPEN_FOR_WRITING, which is reported, when it cannot be opened. A report that could be opened counts as
// written; where it is not, the old one stays.
int writeReportFile(const std::string& path, const std::vector<std::string>& lines);

}  // namespace tvxconv
