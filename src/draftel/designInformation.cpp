// What a conversion learns before it moves anything: the design file, the root schematics, the
// simulation profiles and which schematic each of them belongs to.

#include "converter/errors.h"
#include "draftel/DraftelProjectConverter.h"
#include "dsnreader/dsnreader.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/lines.h"
#include "fsutil/paths.h"
#include "platform/platform.h"
#include "tvx_wobj/tvx_wobj.h"

namespace tvxconv {
namespace {

constexpr const char* kDesignReader = "DraDsnReader";
constexpr const char* kDesignReaderEntry = "getDsnInfo";

// Where the design file lies that the project file calls `entry`; 1 when that cannot be told.
int locateDesignFile(const std::string& entry, const std::string& projectDir, std::string& path) {
    std::string reference;
    fsutil::toForwardSlashes(entry, reference);
    bool isRelative = false;
    fsutil::normaliseReference(reference, isRelative);
    if (isRelative) return fsutil::resolveRelative(reference, projectDir, path) == 0 ? 0 : 1;
    std::string folder;
    const bool hasFolder = fsutil::folderOf(reference, folder) == 0;
    path = hasFolder ? reference : projectDir + "/" + reference;
    return 0;
}

}  // namespace

int DraftelProjectConverter::readDesignInformation() {
    std::string projectPath;
    std::string projectDir;
    getProjectPath(projectPath);
    getProjectDir(projectDir);
    tvx_wobj::Strings paths;
    tvx_wobj::Strings names;
    if (tvx_wobj::readProjectFiles(projectPath, "Design Resources", paths, names, true) != 0) {
        return reportError(ERR_READ_FILE, projectPath);
    }
    for (const std::string& entry : paths) {
        if (!fsutil::endsWithIgnoringCase(entry, ".dsn")) continue;
        std::string path;
        std::string fileName;
        std::string folder;
        std::string base;
        if (locateDesignFile(entry, projectDir, path) == 0 && fsutil::isPresentFile(path) &&
            fsutil::fileNameOf(path, fileName) == 0 && fsutil::folderOf(path, folder) == 0 &&
            fsutil::baseNameOf(fileName, base) == 0) {
            setDesignFilePath(path);
            setDesignDir(folder);
            setDesignFileBaseName(base);
            return 0;
        }
        break;  // the first design is the project's; another one further down is not its stand-in
    }
    return reportError(ERR_READ_FILE, projectPath);
}

int DraftelProjectConverter::readRootSchematics() {
    std::string designFile;
    getDesignFilePath(designFile);
    rootSchematics_.clear();
    void* reader = platform::loadModule(kDesignReader);
    if (reader == nullptr) return reportError(ERR_READ_DESIGN_FILE, designFile);
    const auto getInfo =
        reinterpret_cast<decltype(&getDsnInfo)>(platform::findSymbol(reader, kDesignReaderEntry));
    if (getInfo == nullptr || getInfo(designFile, std::string(), rootSchematics_) != 0) {
        return reportError(ERR_READ_DESIGN_FILE, designFile);
    }
    return 0;
}

int DraftelProjectConverter::discoverProfiles() {
    std::string projectPath;
    getProjectPath(projectPath);
    tvx_wobj::Strings profileFiles;
    tvx_wobj::Strings profileNames;
    std::string active;
    if (tvx_wobj::readSimProfiles(projectPath, profileFiles, profileNames, active, true) != 0) {
        return reportError(ERR_READ_FILE, projectPath);
    }
    std::string designBase;
    if (getDesignFileBaseName(designBase) != 0) return 0;
    for (const std::string& registeredPath : profileFiles) {
        std::string fileName;
        fsutil::fileNameOf(registeredPath, fileName);
        if (fileName.empty()) continue;
        std::string fileBase;
        fsutil::baseNameOf(fileName, fileBase);
        ProfileNames names;
        if (readProfileNames(fileBase, names) != 0) continue;
        addProfileRecord(fileBase, names.profile, names.schematic, registeredPath);
    }
    return 0;
}

int DraftelProjectConverter::readProfileNames(const std::string& fileBase, ProfileNames& names) const {
    names = ProfileNames();
    std::string projectDir;
    getProjectDir(projectDir);
    const std::string path = projectDir + "/" + fileBase + ".sim";
    if (!fsutil::isPresentFile(path)) return 0;
    fsutil::LineReader reader;
    if (reader.open(path) != 0) return reportError(ERR_OPEN_FOR_READING, path);
    std::string_view line;
    while (reader.next(line)) {
        const bool isProfile = fsutil::beginsWithKey(line, "ProfileName");
        if (!isProfile && !fsutil::beginsWithKey(line, "RootSchematics")) continue;
        std::string value;
        if (fsutil::scanQuotedValue(line, value) != 1) return 1;
        (isProfile ? names.profile : names.schematic) = value;
        (isProfile ? names.profileLine : names.schematicLine) = reader.lineNumber();
    }
    return reader.failed() ? reportError(ERR_OPEN_FOR_READING, path) : 0;
}

}  // namespace tvxconv
