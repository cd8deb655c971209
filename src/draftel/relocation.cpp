// The relocation: folders for schematics and profiles, and the files that move without a change, or
// with one that another file of this folder makes.

#include "converter/fileSteps.h"
#include "draftel/DraftelProjectConverter.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"

namespace tvxconv {
namespace {

// The outputs that the new layout calls otherwise: their old names carry the profile file's extension.
constexpr const char* kDeck = "sim.cir";
constexpr const char* kRenamedOutputs[][2] = {{kDeck, "cir"}, {"sim.1op", "1op"}, {"sim.mif", "mif"}};

std::string newOutputExtension(const std::string& extension) {
    for (const auto& [from, to] : kRenamedOutputs) {
        if (fsutil::equalIgnoringCase(extension, from)) return to;
    }
    return extension;
}

}  // namespace

int DraftelProjectConverter::copyDesignLevelFiles() {
    std::string projectDir;
    std::string destination;
    std::string designBase;
    getProjectDir(projectDir);
    getDestinationDir(destination);
    getDesignFileBaseName(designBase);
    const std::string root = simulationRoot();
    int status = 0;
    for (const std::string& extension : designLevelExtensions_) {
        const std::string name = designBase + "." + extension;
        const std::string source = projectDir + "/" + name;
        const std::string newPath = root + "/" + name;
        bool isPresent = false;
        if (const int copied = copyFileIfPresentOrReport(source, newPath, isPresent); copied != 0) {
            status = copied;
        } else if (isPresent) {
            recordMove(source, newPath, destination);
        }
    }
    return status;
}

int DraftelProjectConverter::relocateSchematics() {
    std::string destination;
    std::string designBase;
    getDestinationDir(destination);
    getDesignFileBaseName(designBase);
    const std::string root = simulationRoot();
    for (const std::string& schematic : rootSchematics_) {
        const std::string schematicFolder = root + "/" + schematic;
        if (const int status = ensureDirectoryOrReport(schematicFolder); status != 0) return status;
        if (const int status = relocateSchematicNetlist(designBase, schematic, destination, schematicFolder);
            status != 0) {
            return status;
        }
        std::vector<std::string> fileBases;
        std::vector<std::string> profiles;
        getProfilesOfSchematic(schematic, fileBases, profiles);
        for (std::size_t i = 0; i < profiles.size(); ++i) {
            const std::string profileFolder = schematicFolder + "/" + profiles[i];
            if (const int status = ensureDirectoryOrReport(profileFolder); status != 0) return status;
            if (const int status =
                    relocateProfileOutputs(designBase, schematic, profiles[i], destination, profileFolder);
                status != 0) {
                return status;
            }
            if (const int status =
                    rewriteSimProfile(fileBases[i], profiles[i], destination, schematicFolder, schematic);
                status != 0) {
                return status;
            }
        }
    }
    return 0;
}

int DraftelProjectConverter::relocateProfileOutputs(const std::string& designBase,
                                                    const std::string& schematic, const std::string& profile,
                                                    const std::string& destination,
                                                    const std::string& profileFolder) {
    std::string projectDir;
    getProjectDir(projectDir);
    const std::string oldStem = projectDir + "/" + designBase + "-" + schematic + "-" + profile + ".";
    for (const std::string& extension : profileLevelExtensions_) {
        const std::string oldPath = oldStem + extension;
        const std::string newExtension = newOutputExtension(extension);
        std::string newPath = profileFolder + "/" + profile + "." + newExtension;
        // One output that cannot be written does not keep the others from following their profile.
        bool isPresent = false;
        if (!fsutil::equalIgnoringCase(extension, kDeck)) {
            copyFileIfPresentOrReport(oldPath, newPath, isPresent);
        } else if (fsutil::isPresentFile(oldPath)) {
            isPresent = true;
            rewriteSimulationNetlist(newPath, oldPath, projectDir, schematic, profile, profileFolder,
                                     newExtension);
        }
        if (!isPresent) continue;
        recordMove(oldPath, newPath, destination);
    }
    return 0;
}

}  // namespace tvxconv
