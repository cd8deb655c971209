// The driver: which cells of the library are converted, in which order, and where a conversion stops.

#include "converter/errors.h"
#include "converter/folderNames.h"
#include "fsutil/paths.h"
#include "tarnet/TarnetProjectConverter.h"
#include "tarnet/views.h"

namespace tvxconv {
namespace {

// The mode of every Tarnet conversion: the one that the listing asks for.
constexpr int kLibraryMode = 1;

}  // namespace

int TarnetProjectConverter::convertLibrary() {
    setMode(kLibraryMode);
    std::string library;
    if (getProjectPath(library) != 0) return 1;
    std::string parent;
    std::string parentName;
    if (fsutil::folderOf(library, parent) != 0 || fsutil::fileNameOf(parent, parentName) != 0) return 1;
    setLibraryDirectory(library);
    setLibraryParentName(parentName);
    classifyCellFiles();
    int status = 0;
    const int opened = forEachName(library, [&](const std::string& cell) {
        if (!isCellName(cell)) return true;
        const std::string cellFolder = library + "/" + cell;
        if (isView(cellFolder + "/" + kNewView) || !isView(cellFolder + "/" + kOldView)) return true;
        status = convertCell(cellFolder + "/" + kOldView);
        return status == 0;
    });
    return opened == 0 ? status : reportError(ERR_OPEN_DIRECTORY, library);
}

int TarnetProjectConverter::convertCell(const std::string& cfgAnalogDirectory) {
    setProjectDir(cfgAnalogDirectory);
    setSourceDir(cfgAnalogDirectory);
    std::string cellFolder;
    if (fsutil::folderOf(cfgAnalogDirectory, cellFolder) != 0) return 1;
    const std::string newView = cellFolder + "/" + kNewView;
    setDestinationDir(newView);
    std::string cell;
    if (fsutil::fileNameOf(cellFolder, cell) != 0) return 1;
    setDesignName(cell);
    setCellName(cell);
    setProjectPath(cfgAnalogDirectory + "/" + cell + ".opj");
    setNewProjectPath(newView + "/" + cell + ".opj");
    return relocateCellFiles();
}

}  // namespace tvxconv
