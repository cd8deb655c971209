// The relocation: it makes folders for schematics and profiles, and moves the files that do not change.
// Files that are rewritten have their own source files beside this one.

#include "converter/fileSteps.h"
#include "draftel/DraftelProjectConverter.h"
#include "draftel/layout.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"

namespace tvxconv {

using namespace draftel;

int DraftelProjectConverter::copyDesignLevelFiles() {
    const std::string root = simulationRoot();
    int status = 0;
    for (const std::string& extension : designLevelExtensions_) {
        const std::string name = designFileBaseName_ + "." + extension;
        const std::string source = projectDir() + "/" + name;
        const std::string newPath = root + "/" + name;
        bool isPresent = false;
        if (const int copied = copyFileIfPresentOrReport(source, newPath, isPresent); copied != 0) {
            status = copied;
        } else if (isPresent) {
            recordMove(source, newPath, destinationDir());
        }
    }
    return status;
}

int DraftelProjectConverter::relocateSchematics() {
    for (const std::string& schematic : rootSchematics_) {
        if (const int status = relocateSchematic(schematic); status != 0) return status;
    }
    return 0;
}

int DraftelProjectConverter::relocateSchematic(const std::string& schematic) {
    const std::string& designBase = designFileBaseName_;
    const std::string& destination = destinationDir();
    const std::string schematicFolder = simulationRoot() + "/" + schematic;
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
    return relocateSchematicFiles(designBase, schematic, destination, schematicFolder);
}

int DraftelProjectConverter::relocateProfileOutputs(const std::string& designBase,
                                                    const std::string& schematic, const std::string& profile,
                                                    const std::string& destination,
                                                    const std::string& profileFolder) {
    const std::string oldStem = projectDir() + "/" + oldOutputStem(designBase, schematic, profile);
    for (const std::string& extension : profileLevelExtensions_) {
        const std::string oldPath = oldStem + extension;
        std::string newPath = profileFolder + "/" + newOutputName(profile, extension);
        bool isPresent = false;
        // An output that cannot be written must not stop the profile's other outputs.
        if (fsutil::equalIgnoringCase(extension, kOldDeckExtension)) {
            isPresent = fsutil::isPresentFile(oldPath);
            if (isPresent) {
                rewriteSimulationNetlist(newPath, oldPath, projectDir(), schematic, profile, profileFolder,
                                         newOutputExtension(extension));
            }
        } else {
            copyFileIfPresentOrReport(oldPath, newPath, isPresent);
        }
        if (isPresent) recordMove(oldPath, newPath, destination);
    }
    return 0;
}

}  // namespace tvxconv
