// layout.h
//
// The two views of a cell of a Tarnet library: their folders, the file that marks a folder as a view, which
// file of the old view goes where in the new one, and what it is called there. Whoever has to know a name of
// either view asks here. Extensions are without their leading "."; letter case does not count in them.

#pragma once

#include <string>

#include "converter/outputName.h"

namespace tvxconv::tarnet {

constexpr const char* kOldView = "cfg_analog";
constexpr const char* kNewView = "tvx_sim_1";
constexpr const char* kViewMarker = "master.tag";
// The folder in the new view that has the profile files, and a folder for each profile.
constexpr const char* kProfilesFolder = "profiles";

// Extensions that are treated in a way of their own.
constexpr const char* kProfile = "sim";
constexpr const char* kNetlist = "net";
constexpr const char* kOptimizer = "opt";
constexpr const char* kPartProperties = "prp";
constexpr const char* kProject = "opj";

// Whether an entry of a library may be a cell: their names have no ".".
bool isCellName(const std::string& name);

// The folders of the views of the cell whose folder this is.
std::string oldViewOf(const std::string& cellFolder);
std::string newViewOf(const std::string& cellFolder);

// Whether the folder is marked as a view. A marker that may not be read counts as absent.
bool isView(const std::string& folder);

// The name, in the new view, of a file that takes the cell's.
std::string newCellFileName(const std::string& cell, const std::string& extension);

}  // namespace tvxconv::tarnet
