// ProjectInspection.h
//
// A look at a project before anything is written: can it be read, and would any name or entry in it
// lead the conversion out of its destination?

#pragma once

#include <string>
#include <vector>

struct ProjectInspection {
    // 0, or why the project cannot be converted: the status of the step that could not read it, 1 for a
    // refusal.
    int status = 0;
    // The refusal, with the file and line that gave rise to it. Empty when the library has recorded an
    // error instead.
    std::string refusal;
    // What the user should know though the conversion goes on.
    std::vector<std::string> warnings;

    std::string projectDir;
    std::string designName;
    std::string designBase;
    std::string designDir;
    // File names of the profile files that the project registers, in the project's folder.
    std::vector<std::string> profileFiles;
};

// `project` is absolute. `destination` is the folder to convert into; empty for a conversion in place.
ProjectInspection inspectProject(const std::string& project, const std::string& destination);

// The registered profiles of the project that are not in the converted one, by their paths.
std::vector<std::string> profilesLeftOut(const std::string& project, const std::string& newProject);
