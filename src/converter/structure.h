// structure.h
//
// The new structure as lines of text: a folder by its path, its files indented below it. Hosts show it
// after a conversion.

#pragma once

#include <string>
#include <vector>

namespace tvxconv {

// The text before the name of a file.
constexpr const char* kIndent = "    ";

// Appends the path of a folder and, indented, the names of its files. An entry counts as a folder if its
// name has no "."; those are added to `subFolders`, by name. A name that ends in its first "." is left out.
// False, with nothing appended, if the folder cannot be listed.
bool listFolder(const std::string& folder, std::vector<std::string>& lines,
                std::vector<std::string>& subFolders);

}  // namespace tvxconv
