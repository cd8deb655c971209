// layout.h
//
// The old and the new layout of a Draftel project: the names of files in each, which files are rewritten,
// and which entries of a project file name files. Code that needs a name of either layout asks here.
// Extensions are without their leading "."; their letter case does not matter.

#pragma once

#include <span>
#include <string>
#include <vector>

#include "converter/outputName.h"

namespace tvxconv::draftel {

// --- extensions ---

// The extensions of "<design>.<extension>", "<design>-<schematic>.<extension>" and
// "<design>-<schematic>-<profile>.<extension>", in the order in which a conversion goes through them.
std::span<const char* const> designLevel();
std::span<const char* const> schematicLevel();
std::span<const char* const> profileLevel();

constexpr const char* kDesign = "dsn";
constexpr const char* kDesignBackup = "dbk";
constexpr const char* kProject = "opj";
constexpr const char* kProfile = "sim";
constexpr const char* kNetlist = "net";
constexpr const char* kOptimizer = "opt";
constexpr const char* kAnalysis = "aap";

// Extensions of files that are rewritten. All others are byte copies.
constexpr const char* kRewritten[] = {kProfile, kNetlist, kOldDeckExtension, kOptimizer, kAnalysis, kProject};

// --- names ---

// The path of a schematic's file in the old layout: default markers are in the project's folder, all others
// in the design's.
std::string oldSchematicFile(const std::string& projectDir, const std::string& designDir,
                             const std::string& designBase, const std::string& schematic,
                             const std::string& extension);
// Its name in the schematic's folder.
std::string newSchematicFileName(const std::string& schematic, const std::string& extension);
// The name of a profile's output without its extension, up to and including the "." before it.
std::string oldOutputStem(const std::string& designBase, const std::string& schematic,
                          const std::string& profile);
// The name of the simulation root's folder in the new layout.
std::string simulationRootName(const std::string& designName);

// --- the project file ---

constexpr const char* kDesignFolder = "Design Resources";
constexpr const char* kSimulatorFolder = "Tevrix Resources";
constexpr const char* kOutputFolder = "Outputs";
constexpr const char* kLibrarySubFolder = "Library";

// The folders that an update goes through, and pairs of a folder and a sub-folder.
struct SubFolder {
    const char* folder;
    const char* name;
};
std::span<const char* const> projectFolders();
std::span<const SubFolder> projectSubFolders();

// Entries that name files which a conversion moves or copies: those in a folder, or in a sub-folder of it
// (else ""), with one type and one end of the path ("" for any).
struct FileEntries {
    const char* folder;
    const char* subFolder;
    const char* type;
    const char* pathEnd;
};
constexpr const char* kDesignType = "Schematic Design";
constexpr FileEntries kDesignEntries = {kDesignFolder, "", "", ".dsn"};
// The lists of libraries: first the design's, then the simulator's.
constexpr FileEntries kLibraryEntries[] = {
    {kDesignFolder, kLibrarySubFolder, "Schematic Library", ".olb"},
    {kSimulatorFolder, "Model Libraries", "TevrixLibrary", ""},
    {kSimulatorFolder, "Stimulus Files", "TevrixLibrary", ""},
    {kSimulatorFolder, "Include Files", "TevrixLibrary", ""},
};
// Whether all entries of the folder, or of the sub-folder, name such files.
bool isUpdatedAsAWhole(const std::string& folder);
bool isUpdatedAsAWhole(const std::string& folder, const std::string& subFolder);
// All the entries described above.
std::vector<FileEntries> entriesThatNameFiles();

}  // namespace tvxconv::draftel
