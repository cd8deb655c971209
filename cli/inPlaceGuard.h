// inPlaceGuard.h
//
// Guarding the old files of a project that is converted in place: what may be deleted is kept before,
// checked after, and put back where it has not arrived.

#pragma once

#include <string>
#include <vector>

#include "KeptFiles.h"
#include "ProjectInspection.h"

namespace tvxconv {
class DraftelProjectConverter;
}

// Keeps every file that a conversion in place may delete or change. False, with the file or folder in
// `failed`, when that cannot be done.
bool keepOldFiles(const std::string& project, const ProjectInspection& inspection, KeptFiles& kept,
                  std::string& failed);

// Checks each move that the conversion has recorded: the new file must be there and, where it is a copy,
// have the old one's bytes. Puts back the old files of those that do not, and returns their paths.
std::vector<std::string> putBackWhatIsMissing(tvxconv::DraftelProjectConverter& converter, KeptFiles& kept);

// Puts everything back after a failure, and tells the user.
void putBackAll(KeptFiles& kept);

// Whether two paths name one file or folder.
bool isSameFile(const std::string& a, const std::string& b);
