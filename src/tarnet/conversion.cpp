// The driver: which cells of the library are converted, in which order, and which failures end a conversion.

#include "converter/folderNames.h"
#include "errors/errors.h"
#include "fsutil/paths.h"
#include "tarnet/TarnetProjectConverter.h"
#include "tarnet/layout.h"

namespace tvxconv {

using namespace tarnet;

int TarnetProjectConverter::convertLibrary() {
    setMode(kLibraryMode);
    const std::string library = projectPath();
    std::string parent;
    std::string parentName;
    if (fsutil::folderOf(library, parent) != 0 || fsutil::fileNameOf(parent, parentName) != 0) return 1;
    setLibraryDirectory(library);
    setLibraryParentName(parentName);
    classifyCellFiles();
    int status = 0;
    const int opened = forEachName(library, [&](const std::string& name) {
        const std::string cell = library + "/" + name;
        if (isCellName(name) && !isView(newViewOf(cell)) && isView(oldViewOf(cell))) {
            status = convertCell(oldViewOf(cell));
        }
        return status == 0;
    });
    return opened == 0 ? status : reportError(ERR_OPEN_DIRECTORY, library);
}

int TarnetProjectConverter::convertCell(const std::string& cfgAnalogDirectory) {
    setProjectDir(cfgAnalogDirectory);
    setSourceDir(cfgAnalogDirectory);
    std::string cellFolder;
    if (fsutil::folderOf(cfgAnalogDirectory, cellFolder) != 0) return 1;
    const std::string newView = newViewOf(cellFolder);
    setDestinationDir(newView);
    std::string cell;
    if (fsutil::fileNameOf(cellFolder, cell) != 0) return 1;
    setDesignName(cell);
    setCellName(cell);
    const std::string project = newCellFileName(cell, kProject);
    setProjectPath(cfgAnalogDirectory + "/" + project);
    setNewProjectPath(newView + "/" + project);
    return relocateCellFiles();
}

}  // namespace tvxconv
