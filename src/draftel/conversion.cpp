// The driver: what a conversion does, in which order, and where it stops.

#include "converter/errors.h"
#include "converter/fileSteps.h"
#include "draftel/DraftelProjectConverter.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/paths.h"

namespace tvxconv {
namespace {

constexpr int kInPlace = 1;
constexpr int kIntoDestination = 2;

// Never deleted, though the table of moves has them: the design stays the user's, under an absolute
// path in the table, and the old project file is the user's way back, under a relative one.
bool staysInPlace(const std::string& extension, bool isRelative) {
    using fsutil::equalIgnoringCase;
    if (isRelative) return equalIgnoringCase(extension, "opj");
    return equalIgnoringCase(extension, "dsn") || equalIgnoringCase(extension, "dbk");
}

}  // namespace

int DraftelProjectConverter::convert(int mode, const std::string& path) {
    setRequestedMode(mode);
    int status = 0;
    if (mode == kInPlace) status = convertInPlace();
    if (mode == kIntoDestination) status = convertIntoDestination(path);
    fsutil::forgetFolders();
    return status;
}

int DraftelProjectConverter::convertIntoDestination(const std::string& path) {
    setMode(kIntoDestination);
    setDestinationDir(path);
    std::string projectPath;
    if (getProjectPath(projectPath) != 0) return 1;
    std::string projectDir;
    if (fsutil::folderOf(projectPath, projectDir) != 0) return 1;
    setProjectDir(projectDir);
    setSourceDir(projectDir);
    std::string designName;
    if (getDesignName(designName) != 0) {
        std::string fileName;
        if (fsutil::fileNameOf(projectPath, fileName) != 0) return 1;
        if (fsutil::baseNameOf(fileName, designName) != 0) return 1;
        setDesignName(designName);
    }
    classifySimulationFiles();
    return runConversionSteps();
}

int DraftelProjectConverter::runConversionSteps() {
    std::string destination;
    getDestinationDir(destination);
    if (const int status = ensureDirectoryOrReport(destination); status != 0) return status;
    if (const int status = ensureDirectoryOrReport(simulationRoot()); status != 0) return status;
    if (const int status = readDesignInformation(); status != 0) return status;
    if (const int status = readRootSchematics(); status != 0) return status;
    discoverProfiles();  // a project whose profiles cannot be listed still has its other files
    if (const int status = copyDesignLevelFiles(); status != 0) return status;
    if (const int status = relocateSchematics(); status != 0) return status;
    fsutil::forgetFolders();  // the project of many profiles needs the room
    return updateProjectFiles();
}

int DraftelProjectConverter::convertInPlace() {
    std::string projectPath;
    if (const int status = getProjectPath(projectPath); status != 0) return status;
    std::string folder;
    if (fsutil::folderOf(projectPath, folder) != 0) return 1;
    if (const int status = convert(kIntoDestination, folder); status != 0) return status;
    return deleteOldFiles();
}

int DraftelProjectConverter::deleteOldFiles() {
    std::string projectDir;
    getProjectDir(projectDir);
    std::string oldPath;
    std::string newPath;
    for (int end = firstRelocation(oldPath, newPath); end == 0; end = nextRelocation(oldPath, newPath)) {
        std::string fileName;
        std::string extension;
        fsutil::fileNameOf(oldPath, fileName);
        fsutil::extensionOf(fileName, extension);
        std::string file = oldPath;
        bool isRelative = false;
        fsutil::normaliseReference(file, isRelative);
        if (staysInPlace(extension, isRelative)) continue;
        if (isRelative && fsutil::resolveRelative(oldPath, projectDir, file) != 0) continue;
        if (fsutil::deleteFile(file) != 0) return reportError(ERR_DELETE_FILE, file);
    }
    return 0;
}

}  // namespace tvxconv
