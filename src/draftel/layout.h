// layout.h
//
// The old and the new layout of a Draftel project: what files are called in each, which are rewritten on the
// way, and which entries of a project file name files. Whoever has to know a name of either layout asks here.
// Extensions are without their leading "."; letter case does not count in them.

#pragma once

#include <span>
#include <string>
#include <vector>

#include "converter/outputName.h"

namespace tvxconv::draftel {

// --- extensions ---

// Of "<design>.<extension>", "<design>-<schematic>.<extension>" and
// "<design>-<schematic>-<profile>.<extension>", in the order in which a conversion walks them.
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

// Those of files whose new form is another text than the old one. All others are byte copies.
constexpr const char* kRewritten[] = {kProfile, kNetlist, kOldDeckExtension, kOptimizer, kAnalysis, kProject};

// --- names ---

// Where a file of a schematic is in the old layout: default markers lie with the project, all others with the
// design.
std::string oldSchematicFile(const std::string& projectDir, const std::string& designDir,
                             const std::string& designBase, const std::string& schematic,
                             const std::string& extension);
// What it is called in the schematic's folder.
std::string newSchematicFileName(const std::string& schematic, const std::string& extension);
// The name of an output of a profile without its extension, with the "." before that.
std::string oldOutputStem(const std::string& designBase, const std::string& schematic,
                          const std::string& profile);
// What the folder of the new layout is called.
std::string simulationRootName(const std::string& designName);

// --- the project file ---

constexpr const char* kDesignFolder = "Design Resources";
constexpr const char* kSimulatorFolder = "Tevrix Resources";
constexpr const char* kOutputFolder = "Outputs";
constexpr const char* kLibrarySubFolder = "Library";

// The folders that an update walks, and pairs of a folder and a sub-folder.
struct SubFolder {
    const char* folder;
    const char* name;
};
std::span<const char* const> projectFolders();
std::span<const SubFolder> projectSubFolders();

// Entries that name files which a conversion moves or takes along: those in a folder, or in a sub-folder of
// it (else ""), of one type and with one end of the path ("" for any).
struct FileEntries {
    const char* folder;
    const char* subFolder;
    const char* type;
    const char* pathEnd;
};
constexpr const char* kDesignType = "Schematic Design";
constexpr FileEntries kDesignEntries = {kDesignFolder, "", "", ".dsn"};
// The lists of libraries. That of the design first; the others are the simulator's.
constexpr FileEntries kLibraryEntries[] = {
    {kDesignFolder, kLibrarySubFolder, "Schematic Library", ".olb"},
    {kSimulatorFolder, "Model Libraries", "TevrixLibrary", ""},
    {kSimulatorFolder, "Stimulus Files", "TevrixLibrary", ""},
    {kSimulatorFolder, "Include Files", "TevrixLibrary", ""},
};
// Whether all entries of the folder, or of the sub-folder, name such files.
bool isUpdatedAsAWhole(const std::string& folder);
bool isUpdatedAsAWhole(const std::string& folder, const std::string& subFolder);
// All of these.
std::vector<FileEntries> entriesThatNameFiles();

}  // namespace tvxconv::draftel
