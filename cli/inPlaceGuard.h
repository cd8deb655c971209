// inPlaceGuard.h
//
// Guards the old files of a project that is converted in place: files that may be deleted are kept before,
// checked after, and restored if they have not arrived.

#pragma once

#include <set>
#include <string>
#include <vector>

#include "KeptFiles.h"
#include "ProjectInspection.h"

namespace tvxconv {
class DraftelProjectConverter;
}

// A file in the project's folder that a conversion would overwrite with other content: the new project
// file, or a copy of the design from another folder. Empty if there is none.
std::string fileInTheWay(const std::string& project, const ProjectInspection& inspection);

// Keeps every file that a conversion in place may delete or change. False, with the file or folder in
// `failed`, if that cannot be done.
bool keepOldFiles(const std::string& project, const ProjectInspection& inspection, KeptFiles& kept,
                  std::string& failed);

// The files in the simulation root before the conversion, as lower-case paths.
std::set<std::string> filesInSimulationRoot(const ProjectInspection& inspection);

// The old files that a conversion has not carried over.
struct NotCarried {
    std::vector<std::string> putBack;  // restored at their old paths
    std::vector<std::string> stuck;    // could not be restored, and are still kept
};

// Checks each move that the conversion has recorded: the new file must exist and, if it is a copy, have the
// old one's bytes. A rewritten one must not be in `doubtful` (lower-case paths), nor be empty unless the
// old one is. Restores the old files of those that have not arrived.
NotCarried putBackWhatIsMissing(tvxconv::DraftelProjectConverter& converter, KeptFiles& kept,
                                const std::set<std::string>& doubtful);

// Restores everything after a failure, and tells the user.
void putBackAll(KeptFiles& kept);

// Removes the kept files. Tells the user of a folder that could not be removed.
void releaseKept(KeptFiles& kept);
