// The relocation: folders for schematics and profiles, and the files that move without a change. Those that
// are rewritten on the way have source files of their own beside this one.

#include <algorithm>
#include <cstdint>
#include <utility>

#include "converter/errors.h"
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
    int status = 0;
    try {
        status = relocateEachSchematic();
    } catch (...) {
        copyQueue_.discard();
        throw;
    }
    finishCopies();
    return status;
}

int DraftelProjectConverter::relocateEachSchematic() {
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
            queueProfileOutputs(designBase, schematic, profiles[i], destination, profileFolder);
            if (const int status =
                    rewriteSimProfile(fileBases[i], profiles[i], destination, schematicFolder, schematic);
                status != 0) {
                return status;
            }
        }
        if (const int status = relocateSchematicFiles(designBase, schematic, destination, schematicFolder);
            status != 0) {
            return status;
        }
    }
    return 0;
}

int DraftelProjectConverter::relocateProfileOutputs(const std::string& designBase,
                                                    const std::string& schematic, const std::string& profile,
                                                    const std::string& destination,
                                                    const std::string& profileFolder) {
    queueProfileOutputs(designBase, schematic, profile, destination, profileFolder);
    finishCopies();
    return 0;
}

void DraftelProjectConverter::queueProfileOutputs(const std::string& designBase, const std::string& schematic,
                                                  const std::string& profile, const std::string& destination,
                                                  const std::string& profileFolder) {
    std::string projectDir;
    getProjectDir(projectDir);
    const std::string oldStem = projectDir + "/" + designBase + "-" + schematic + "-" + profile + ".";
    const std::string newStem = profileFolder + "/" + profile + ".";
    std::vector<fsutil::FileCopy> copies;
    copies.reserve(profileLevelExtensions_.size());
    for (const std::string& extension : profileLevelExtensions_) {
        const std::string oldPath = oldStem + extension;
        if (!fsutil::isPresentFile(oldPath)) continue;
        const std::string newExtension = newOutputExtension(extension);
        std::string newPath = newStem + newExtension;
        // One output that cannot be written does not keep the others from following their profile.
        const bool sharesPlace = std::any_of(copies.begin(), copies.end(), [&](const fsutil::FileCopy& copy) {
            return fsutil::equalIgnoringCase(copy.destination, newPath);
        });
        if (sharesPlace) {
            copyQueue_.add(profileFolder, std::exchange(copies, {}));
            finishCopies();
        }
        if (fsutil::equalIgnoringCase(extension, kDeck)) {
            rewriteSimulationNetlist(newPath, oldPath, projectDir, schematic, profile, profileFolder,
                                     newExtension);
        } else {
            copies.push_back({oldPath, newPath, countReportedErrors()});
        }
        recordMove(oldPath, newPath, destination);
    }
    copyQueue_.add(profileFolder, std::move(copies));
}

void DraftelProjectConverter::finishCopies() {
    const std::vector<fsutil::FileCopy> failed = copyQueue_.finish();
    const std::uint64_t reported = countReportedErrors();
    for (const fsutil::FileCopy& copy : failed) {
        if (copy.tag == reported) reportError(ERR_COPY_FILE, copy.source, copy.destination);
    }
}

}  // namespace tvxconv
