// The files that belong to a schematic and to none of its profiles. Most are copied under a name made from
// the schematic's alone; the optimizer file is rewritten here, the advanced-analysis profile in
// analysisProfile.cpp. The netlist and the profile files have steps of their own.
//
// An optimizer file has, among others, lines of a word and a quoted value that name profile files ("sim") and
// design profiles ("ext"). The profile files are beside it afterwards, under their new names. A design
// profile that it names without a folder comes along; one in a folder stays there and is named from the root.

#include "converter/fileSteps.h"
#include "converter/rewriting.h"
#include "draftel/DraftelProjectConverter.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/lines.h"
#include "fsutil/paths.h"

namespace tvxconv {
namespace {

constexpr const char* kDefaultMarker = "default.mrk";
constexpr const char* kPartProperties = "prp";
constexpr const char* kOptimizer = "opt";
constexpr const char* kAnalysisProfile = "aap";
// Moved by the steps for netlists and profiles.
constexpr const char* kMovedElsewhere[] = {"net", "sim"};

constexpr const char* kSimulation = "sim";
constexpr const char* kExternal = "ext";

bool isMovedElsewhere(const std::string& extension) {
    for (const char* other : kMovedElsewhere) {
        if (fsutil::equalIgnoringCase(extension, other)) return true;
    }
    return false;
}

// The name in the schematic's folder. The folder tells the design and the kind of a file; the part
// properties keep apart from those of the design as a whole.
std::string newNameOf(const std::string& schematic, const std::string& extension) {
    if (fsutil::equalIgnoringCase(extension, kDefaultMarker)) return schematic + "-" + kDefaultMarker;
    if (fsutil::equalIgnoringCase(extension, kPartProperties)) return schematic + "_sch." + kPartProperties;
    return schematic + "." + extension;
}

}  // namespace

int DraftelProjectConverter::relocateSchematicFiles(const std::string& designBase,
                                                    const std::string& schematic,
                                                    const std::string& destination,
                                                    const std::string& schematicFolder) {
    std::string projectDir;
    std::string designDir;
    getProjectDir(projectDir);
    getDesignDir(designDir);
    const std::string stem = designBase + "-" + schematic;
    for (const std::string& extension : schematicLevelExtensions_) {
        if (isMovedElsewhere(extension)) continue;
        // A default marker is the simulator's and lies with its files; the others lie with the design.
        const std::string oldPath = fsutil::equalIgnoringCase(extension, kDefaultMarker)
                                        ? projectDir + "/" + stem + "-" + extension
                                        : designDir + "/" + stem + "." + extension;
        if (!fsutil::isPresentFile(oldPath)) continue;
        // One file that cannot be written does not keep the others from following their schematic.
        std::string newPath;
        if (fsutil::equalIgnoringCase(extension, kOptimizer)) {
            rewriteOptimizerFile(newPath, oldPath, schematic, schematicFolder, extension);
        } else if (fsutil::equalIgnoringCase(extension, kAnalysisProfile)) {
            relocateAnalysisProfile(newPath, oldPath, schematic, schematicFolder, extension);
        } else {
            copySchematicFile(newPath, oldPath, schematic, schematicFolder, extension);
        }
        recordMove(oldPath, newPath, destination);
    }
    return 0;
}

int DraftelProjectConverter::copySchematicFile(std::string& newPath, const std::string& oldPath,
                                               const std::string& schematic,
                                               const std::string& schematicFolder,
                                               const std::string& extension) {
    const std::string target = schematicFolder + "/" + newNameOf(schematic, extension);
    const int status = copyFileOrReport(oldPath, target);
    newPath = target;
    return status;
}

int DraftelProjectConverter::rewriteOptimizerFile(std::string& newPath, const std::string& oldPath,
                                                  const std::string& schematic,
                                                  const std::string& schematicFolder,
                                                  const std::string& extension) {
    const std::string target = schematicFolder + "/" + schematic + "." + extension;
    const auto newProfileFile = [&](std::string& reference, const std::string& value) {
        return newProfileFileName(reference, value);
    };
    const auto newDesignProfile = [&](std::string& reference, const std::string& value) {
        return relocateDesignProfile(reference, value, schematicFolder);
    };
    const int status = rewriteLines(oldPath, target, [&](std::string_view line, fsutil::LineWriter& writer) {
        if (fsutil::beginsWithKey(line, kSimulation)) {
            rewriteValue(line, kSimulation, ".sim", newProfileFile, writer);
        } else if (fsutil::beginsWithKey(line, kExternal)) {
            rewriteValue(line, kExternal, ".mdp", newDesignProfile, writer);
        } else {
            writer.write(line);
        }
    });
    newPath = target;
    return status;
}

int DraftelProjectConverter::relocateDesignProfile(std::string& reference, const std::string& value,
                                                   const std::string& schematicFolder) {
    std::string path;
    fsutil::toForwardSlashes(value, path);
    reference.clear();
    std::string projectDir;
    getProjectDir(projectDir);
    std::string folder;
    if (fsutil::folderOf(path, folder) == 0) {
        bool isRelative = false;
        fsutil::normaliseReference(path, isRelative);
        if (isRelative) return fsutil::resolveRelative(path, projectDir, reference) == 0 ? 0 : 1;
        reference = path;
        return 0;
    }
    reference = path;
    const std::string file = projectDir + "/" + path;
    std::string newPath;
    if (findRelocation(recordedOldPath(file, projectDir), newPath) != 0) {
        newPath = schematicFolder + "/" + path;
        bool isPresent = false;
        if (const int status = copyFileIfPresentOrReport(file, newPath, isPresent); status != 0)
            return status;
        std::string destination;
        getDestinationDir(destination);
        if (isPresent) recordMove(file, newPath, destination);
    }
    return 0;
}

}  // namespace tvxconv
