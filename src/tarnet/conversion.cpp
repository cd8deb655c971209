// The driver: which cells of the library are converted, in which order, and where a conversion stops.

#include "converter/errors.h"
#include "converter/folderNames.h"
#include "fsutil/paths.h"
#include "tarnet/CellsAhead.h"
#include "tarnet/TarnetProjectConverter.h"
#include "tarnet/views.h"

namespace tvxconv {
namespace {

// The mode of every Tarnet conversion: the one that the listing asks for.
constexpr int kLibraryMode = 1;

// Cells that have their turn before threads are worth their start.
constexpr std::size_t kCellsAlone = 4;

// The cells of a library one after the other, but for those that are converted.
class CellWalk {
public:
    CellWalk(const std::string& library, const std::vector<std::string>& names)
        : library_(library), names_(names) {}

    // The folder of the next cell without its new view; empty at the end.
    std::string next() {
        while (at_ < names_.size()) {
            std::string cellFolder = library_ + "/" + names_[at_++];
            if (!isView(newViewOf(cellFolder))) return cellFolder;
        }
        return {};
    }

private:
    const std::string& library_;
    const std::vector<std::string>& names_;
    std::size_t at_ = 0;
};

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
    std::vector<std::string> names;
    const int opened = forEachName(library, [&](const std::string& name) {
        if (isCellName(name)) names.push_back(name);
        return true;
    });
    return opened == 0 ? convertCells(names) : reportError(ERR_OPEN_DIRECTORY, library);
}

int TarnetProjectConverter::convertCells(const std::vector<std::string>& names) {
    CellWalk walk(libraryDirectory_, names);
    CellsAhead ahead(*this);
    // Other threads do not know what a host has entered into the table of moves.
    const bool mayLookAhead = CellsAhead::isPossible() && !hasRelocations();
    for (std::size_t turns = 0;; ++turns) {
        while (mayLookAhead && turns >= kCellsAlone && ahead.mayBegin()) {
            const std::string following = walk.next();
            if (following.empty()) break;
            ahead.begin(following);
        }
        const bool isBegun = ahead.first() != nullptr;
        const std::string cell = isBegun ? *ahead.first() : walk.next();
        if (cell.empty()) return 0;
        if ((isBegun && ahead.accept()) || !isToBeConverted(cell)) continue;
        // It must not see, by a link or by name, what later cells have got already.
        ahead.takeBack();
        if (const int status = convertCell(oldViewOf(cell)); status != 0) return status;
    }
}

int TarnetProjectConverter::convertCell(const std::string& cfgAnalogDirectory) {
    const int status = enterCell(cfgAnalogDirectory);
    return status == 0 ? relocateCellFiles() : status;
}

int TarnetProjectConverter::enterCell(const std::string& cfgAnalogDirectory) {
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
    setProjectPath(cfgAnalogDirectory + "/" + cell + ".opj");
    setNewProjectPath(newView + "/" + cell + ".opj");
    return 0;
}

}  // namespace tvxconv
