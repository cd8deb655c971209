// ProjectInspection.h
//
// Checks a project before anything is written: can it be read, and would any name or entry in it lead the
// conversion out of its destination?

#pragma once

#include <string>
#include <vector>

namespace tvxconv {
class DraftelProjectConverter;
}

struct ProjectInspection {
    // 0, or the reason why the project cannot be converted: the status of the step that could not read it,
    // 1 for a refusal.
    int status = 0;
    // The refusal, with the file and line that caused it. Empty if the library has recorded an error instead.
    std::string refusal;
    std::string projectDir;
    std::string designName;
    std::string designBase;
    std::string designDir;
    // The paths under which the project registers its profiles.
    std::vector<std::string> registeredProfiles;
    // For a conversion in place. flatProfile: the name of a registered profile file that is in the
    // project's folder, as in the old layout. otherProfile: the path of a registered profile that exists in
    // another folder; a conversion would not move that one. The first of each, empty if there is none.
    std::string flatProfile;
    std::string otherProfile;
};

// `project` is absolute. `destination` is the folder to convert into; empty for a conversion in place.
ProjectInspection inspectProject(const std::string& project, const std::string& destination);

// The paths of the registered profiles that are not in the new project.
std::vector<std::string> profilesLeftOut(const ProjectInspection& inspection,
                                         const tvxconv::DraftelProjectConverter& converter);

// The old paths of the analysis profiles that the conversion could not read or could not write. The
// conversion skips those that it cannot read without an error.
std::vector<std::string> analysisProfilesLeftOut(const ProjectInspection& inspection,
                                                 tvxconv::DraftelProjectConverter& converter);
