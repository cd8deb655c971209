// What a conversion finds out before it moves anything: the design file and its root schematics. The
// simulation profiles are found in profileRecords.cpp.

#include "draftel/DraftelProjectConverter.h"
#include "draftel/layout.h"
#include "dsnreader/dsnreader.h"
#include "errors/errors.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/paths.h"
#include "platform/platform.h"
#include "tvx_wobj/tvx_wobj.h"

namespace tvxconv {

using namespace draftel;

namespace {

constexpr const char* kDesignReader = "DraDsnReader";
constexpr const char* kDesignReaderEntry = "getDsnInfo";

// Finds the path of the design file that the project file calls `entry`. False if it cannot be resolved.
bool locateDesignFile(const std::string& entry, const std::string& projectDir, std::string& path) {
    const fsutil::Reference reference(entry);
    if (!reference.resolve(projectDir, path)) return false;
    if (!reference.isRelative() && reference.isBare()) path = projectDir + "/" + path;
    return true;
}

}  // namespace

int DraftelProjectConverter::readDesignInformation() {
    tvx_wobj::Strings paths;
    tvx_wobj::Strings names;
    if (tvx_wobj::readProjectFiles(projectPath(), kDesignFolder, paths, names, true) != 0) {
        return reportError(ERR_READ_FILE, projectPath());
    }
    for (const std::string& entry : paths) {
        if (!fsutil::endsWithIgnoringCase(entry, kDesignEntries.pathEnd)) continue;
        std::string path;
        std::string base;
        if (locateDesignFile(entry, projectDir(), path) && fsutil::isPresentFile(path) &&
            fsutil::baseNameOf(fsutil::fileNameOf(path), base) == 0) {
            setDesignFilePath(path);
            setDesignDir(fsutil::folderOf(path));
            setDesignFileBaseName(base);
            return 0;
        }
        break;  // the first design is the project's; a later one does not replace it
    }
    return reportError(ERR_READ_FILE, projectPath());
}

int DraftelProjectConverter::readRootSchematics() {
    rootSchematics_.clear();
    void* reader = platform::loadModule(kDesignReader);
    if (reader == nullptr) return reportError(ERR_READ_DESIGN_FILE, designFilePath_);
    const auto getInfo =
        reinterpret_cast<decltype(&getDsnInfo)>(platform::findSymbol(reader, kDesignReaderEntry));
    if (getInfo == nullptr || getInfo(designFilePath_, std::string(), rootSchematics_) != 0) {
        return reportError(ERR_READ_DESIGN_FILE, designFilePath_);
    }
    return 0;
}

}  // namespace tvxconv
