// ProjectInspection.h
//
// A look at a project before anything is written: can it be read, and would any name or entry in it
// lead the conversion out of its destination?

#pragma once

#include <string>
#include <vector>

namespace tvxconv {
class DraftelProjectConverter;
}

struct ProjectInspection {
    // 0, or why the project cannot be converted: the status of the step that could not read it, 1 for a
    // refusal.
    int status = 0;
    // The refusal, with the file and line that gave rise to it. Empty when the library has recorded an
    // error instead.
    std::string refusal;
    std::string projectDir;
    std::string designName;
    std::string designBase;
    std::string designDir;
    // The paths under which the project registers its profiles.
    std::vector<std::string> registeredProfiles;
    // For a conversion in place: the name of a registered profile file that lies in the project's folder, as
    // in the old layout, and the path of a registered profile that lies where it is registered, in another
    // folder; a conversion would not carry that one over. The first of each, empty where there is none.
    std::string flatProfile;
    std::string otherProfile;
};

// `project` is absolute. `destination` is the folder to convert into; empty for a conversion in place.
ProjectInspection inspectProject(const std::string& project, const std::string& destination);

// The registered profiles that the conversion has not carried into the new project, by their paths.
std::vector<std::string> profilesLeftOut(const ProjectInspection& inspection,
                                         const tvxconv::DraftelProjectConverter& converter);

// The analysis profiles that the conversion could not read or not write, by their old paths. The first it
// passes over without an error.
std::vector<std::string> analysisProfilesLeftOut(const ProjectInspection& inspection,
                                                 tvxconv::DraftelProjectConverter& converter);
