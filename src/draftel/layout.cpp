#include "draftel/layout.h"

#include <iterator>

#include "draftel/DraftelProjectConverter.h"
#include "fsutil/letterCase.h"

namespace tvxconv::draftel {
namespace {

using fsutil::equalIgnoringCase;

constexpr const char* kDefaultMarker = "default.mrk";
constexpr const char* kPartProperties = "prp";

constexpr const char* kDesignLevel[] = {"lib", "prp", "olb", "err", "ind", "stl", "inc", "obk"};

// "prp" is on two levels: a design and a schematic each have one.
constexpr const char* kSchematicLevel[] = {kProfile,    kNetlist,   "als",       "par",
                                           kOptimizer,  kAnalysis,  "prp",       "opt.log",
                                           "monte.log", "sens.log", "smoke.log", kDefaultMarker};

constexpr const char* kProfileLevel[] = {"csd",      "dat",      "opt.dat", "mc.dat",  "sens.dat", "opt.csd",
                                         "mc.csd",   "sens.csd", "out",     "out.1",   "opt.out",  "mc.out",
                                         "sens.out", "prb",      "mrk",     "sim.1op", "sim.cir",  "sim.mif"};

constexpr const char* kProjectFolders[] = {kOutputFolder, kDesignFolder, kSimulatorFolder, "Translator",
                                           kLibrarySubFolder};

constexpr SubFolder kProjectSubFolders[] = {{kDesignFolder, kLibrarySubFolder},
                                            {"Simulation Resources", "Indesign"}};

}  // namespace

std::span<const char* const> designLevel() {
    return kDesignLevel;
}
std::span<const char* const> schematicLevel() {
    return kSchematicLevel;
}
std::span<const char* const> profileLevel() {
    return kProfileLevel;
}
std::span<const char* const> projectFolders() {
    return kProjectFolders;
}
std::span<const SubFolder> projectSubFolders() {
    return kProjectSubFolders;
}

std::string oldSchematicFile(const std::string& projectDir, const std::string& designDir,
                             const std::string& designBase, const std::string& schematic,
                             const std::string& extension) {
    const bool isMarker = equalIgnoringCase(extension, kDefaultMarker);
    const std::string stem = (isMarker ? projectDir : designDir) + "/" + designBase + "-" + schematic;
    return stem + (isMarker ? "-" : ".") + extension;
}

// The folder shows the design and the kind of a file, so neither is in the name, except that the part
// properties need a name other than the design's.
std::string newSchematicFileName(const std::string& schematic, const std::string& extension) {
    if (equalIgnoringCase(extension, kDefaultMarker)) return schematic + "-" + kDefaultMarker;
    if (equalIgnoringCase(extension, kPartProperties)) return schematic + "_sch." + kPartProperties;
    return schematic + "." + extension;
}

std::string oldOutputStem(const std::string& designBase, const std::string& schematic,
                          const std::string& profile) {
    return designBase + "-" + schematic + "-" + profile + ".";
}

std::string simulationRootName(const std::string& designName) {
    return designName + "-TevrixFiles";
}

bool isUpdatedAsAWhole(const std::string& folder) {
    return !equalIgnoringCase(folder, kDesignFolder);
}

bool isUpdatedAsAWhole(const std::string& folder, const std::string& subFolder) {
    return isUpdatedAsAWhole(folder) && !equalIgnoringCase(subFolder, kLibrarySubFolder);
}

std::vector<FileEntries> entriesThatNameFiles() {
    std::vector<FileEntries> result = {kDesignEntries};
    result.insert(result.end(), std::begin(kLibraryEntries), std::end(kLibraryEntries));
    for (const char* folder : kProjectFolders) {
        if (isUpdatedAsAWhole(folder)) result.push_back({folder, "", "", ""});
    }
    for (const auto& [folder, subFolder] : kProjectSubFolders) {
        if (isUpdatedAsAWhole(folder, subFolder)) result.push_back({folder, subFolder, "", ""});
    }
    return result;
}

}  // namespace tvxconv::draftel

namespace tvxconv {

using namespace draftel;

namespace {

template <class Entries>
void append(std::vector<std::string>& list, const Entries& entries) {
    list.insert(list.end(), std::begin(entries), std::end(entries));
}

}  // namespace

int DraftelProjectConverter::classifySimulationFiles() {
    append(designLevelExtensions_, designLevel());
    append(schematicLevelExtensions_, schematicLevel());
    append(profileLevelExtensions_, profileLevel());
    append(projectFolderNames_, projectFolders());
    for (const auto& [folder, subFolder] : projectSubFolders()) folderMap_.try_emplace(folder, subFolder);
    return 0;
}

}  // namespace tvxconv
