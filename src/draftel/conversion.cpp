// The driver: the steps of a conversion, their order, and which failures end it.

#include "converter/fileSteps.h"
#include "draftel/DraftelProjectConverter.h"
#include "draftel/layout.h"
#include "errors/errors.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/paths.h"

namespace tvxconv {

using namespace draftel;

namespace {

// Never deleted, although they are in the table of moves: the design, recorded under an absolute path,
// stays the user's, and the old project file, recorded under a relative one, is the user's way back.
bool staysInPlace(const std::string& extension, bool isOfProject) {
    using fsutil::equalIgnoringCase;
    if (isOfProject) return equalIgnoringCase(extension, kProject);
    return equalIgnoringCase(extension, kDesign) || equalIgnoringCase(extension, kDesignBackup);
}

}  // namespace

int DraftelProjectConverter::convert(int mode, const std::string& path) {
    const fsutil::RememberedFolders folders;
    setRequestedMode(mode);
    if (mode == kInPlace) return convertInPlace();
    if (mode == kIntoDestination) return convertIntoDestination(path);
    return 0;
}

int DraftelProjectConverter::convertIntoDestination(const std::string& path) {
    setMode(kIntoDestination);
    setDestinationDir(path);
    std::string folder;
    if (fsutil::folderOf(projectPath(), folder) != 0) return 1;
    setProjectDir(folder);
    setSourceDir(folder);
    if (designName().empty()) {
        std::string name;
        if (fsutil::baseNameOf(fsutil::fileNameOf(projectPath()), name) != 0) return 1;
        setDesignName(name);
    }
    classifySimulationFiles();
    return runConversionSteps();
}

int DraftelProjectConverter::runConversionSteps() {
    if (const int status = ensureDirectoryOrReport(destinationDir()); status != 0) return status;
    if (const int status = ensureDirectoryOrReport(simulationRoot()); status != 0) return status;
    if (const int status = readDesignInformation(); status != 0) return status;
    if (const int status = readRootSchematics(); status != 0) return status;
    discoverProfiles();  // a project whose profiles cannot be listed still has other files
    if (const int status = copyDesignLevelFiles(); status != 0) return status;
    if (const int status = relocateSchematics(); status != 0) return status;
    return updateProjectFiles();
}

int DraftelProjectConverter::convertInPlace() {
    std::string folder;
    if (fsutil::folderOf(projectPath(), folder) != 0) return 1;
    if (const int status = convert(kIntoDestination, folder); status != 0) return status;
    return deleteOldFiles();
}

int DraftelProjectConverter::deleteOldFiles() {
    return forEachOldFile([](const std::string& file, bool isOfProject) {
        if (staysInPlace(fsutil::extensionOf(fsutil::fileNameOf(file)), isOfProject)) return 0;
        return fsutil::deleteFile(file) == 0 ? 0 : reportError(ERR_DELETE_FILE, file);
    });
}

}  // namespace tvxconv
