// inPlaceGuard.h
//
// Guarding the old files of a project that is converted in place: what may be deleted is kept before,
// checked after, and put back where it has not arrived.

#pragma once

#include <set>
#include <string>
#include <vector>

#include "KeptFiles.h"
#include "ProjectInspection.h"

namespace tvxconv {
class DraftelProjectConverter;
}

// A file in the project's folder in whose place a conversion would write one of another content: the new
// project file, or a copy of the design that lies elsewhere. Empty when there is none.
std::string fileInTheWay(const std::string& project, const ProjectInspection& inspection);

// Keeps every file that a conversion in place may delete or change. False, with the file or folder in
// `failed`, when that cannot be done.
bool keepOldFiles(const std::string& project, const ProjectInspection& inspection, KeptFiles& kept,
                  std::string& failed);

// The files that lie in the simulation root before the conversion, as lower-case paths.
std::set<std::string> filesInSimulationRoot(const ProjectInspection& inspection);

// What a conversion has not carried over.
struct NotCarried {
    std::vector<std::string> putBack;  // old files that are back in their places
    std::vector<std::string> stuck;    // old files that could not be put back, and are still kept
};

// Checks each move that the conversion has recorded: the new file must be there and, where it is a copy,
// have the old one's bytes. One that is rewritten may not be empty, unless the old one is, nor be one of
// `doubtful` (lower-case paths). Puts back the old files of those that have not arrived.
NotCarried putBackWhatIsMissing(tvxconv::DraftelProjectConverter& converter, KeptFiles& kept,
                                const std::set<std::string>& doubtful);

// Puts everything back after a failure, and tells the user.
void putBackAll(KeptFiles& kept);

// Removes what was kept. A folder that stays is told.
void releaseKept(KeptFiles& kept);
