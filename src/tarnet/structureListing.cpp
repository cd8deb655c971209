// The listing of all cells of the library that have both views, whichever run converted them, and the
// report file.

#include "converter/folderNames.h"
#include "converter/guarded.h"
#include "converter/report.h"
#include "converter/structure.h"
#include "fsutil/files.h"
#include "fsutil/paths.h"
#include "tarnet/TarnetProjectConverter.h"
#include "tarnet/layout.h"

namespace tvxconv {

using namespace tarnet;

namespace {

// The only files of the old view that are listed.
constexpr const char* kListedOldFiles[] = {kViewMarker, "expand.cfg"};

bool isFolder(const std::string& path) {
    bool flag = false;
    fsutil::isDirectory(path, flag);
    return flag;
}

// Lists a folder of the new view and its sub-folders, `levels` deep.
void listFolders(const std::string& folder, int levels, std::vector<std::string>& lines) {
    std::vector<std::string> subFolders;
    listFolder(folder, lines, subFolders);
    if (levels == 1) return;
    for (const std::string& name : subFolders) listFolders(folder + "/" + name, levels - 1, lines);
}

}  // namespace

int TarnetProjectConverter::getNewStructure(std::vector<std::string>& lines) {
    return guarded([&] {
        if (mode() != kLibraryMode) return 1;
        const std::string library = fsutil::toForwardSlashes(libraryDirectory_);
        forEachName(library, [&](const std::string& cell) {
            if (isCellName(cell)) listCell(library + "/" + cell, lines);
            return true;
        });
        return 0;
    });
}

void TarnetProjectConverter::listCell(const std::string& cellFolder, std::vector<std::string>& lines) const {
    const std::string oldView = oldViewOf(cellFolder);
    const std::string newView = newViewOf(cellFolder);
    if (!isFolder(oldView) || !isFolder(newView)) return;
    lines.emplace_back();
    lines.push_back(oldView);
    for (const char* name : kListedOldFiles) {
        if (fsutil::isPresentFile(oldView + "/" + name)) lines.push_back(std::string(kIndent) + name);
    }
    // The view, its folder of profiles, their folders.
    constexpr int kLevels = 3;
    listFolders(newView, kLevels, lines);
}

int TarnetProjectConverter::writeReport(const std::vector<std::string>& lines,
                                        const std::string& reportName) {
    return guarded([&] { return writeReportFile(libraryDirectory_ + "/" + reportName, lines); });
}

}  // namespace tvxconv
