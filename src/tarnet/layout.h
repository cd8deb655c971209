// layout.h
//
// The two views of a cell of a Tarnet library: their folders, the file that marks a folder as a view, where
// each file of the old view goes in the new one, and its name there. Code that needs a name of either view
// asks here. Extensions are without their leading "."; their letter case does not matter.

#pragma once

#include <string>

#include "converter/outputName.h"

namespace tvxconv::tarnet {

constexpr const char* kOldView = "cfg_analog";
constexpr const char* kNewView = "tvx_sim_1";
constexpr const char* kViewMarker = "master.tag";
// The folder in the new view that contains the profile files and a folder for each profile.
constexpr const char* kProfilesFolder = "profiles";

// Extensions that get special treatment.
constexpr const char* kProfile = "sim";
constexpr const char* kNetlist = "net";
constexpr const char* kOptimizer = "opt";
constexpr const char* kPartProperties = "prp";
constexpr const char* kProject = "opj";

// Whether an entry of a library may be a cell: names of cells have no ".".
bool isCellName(const std::string& name);

// The old and the new view of the cell in this folder.
std::string oldViewOf(const std::string& cellFolder);
std::string newViewOf(const std::string& cellFolder);

// Whether the folder is marked as a view. A marker that may not be read counts as absent.
bool isView(const std::string& folder);

// The name, in the new view, of a file that takes the cell's name.
std::string newCellFileName(const std::string& cell, const std::string& extension);

}  // namespace tvxconv::tarnet
