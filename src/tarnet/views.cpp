#include "tarnet/views.h"

#include <algorithm>
#include <string_view>

#include "converter/outputNames.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"

namespace tvxconv {

using fsutil::equalIgnoringCase;

bool isCellName(const std::string& name) {
    return name.find('.') == std::string::npos;
}

std::string oldViewOf(const std::string& cellFolder) {
    return cellFolder + "/" + kOldView;
}

std::string newViewOf(const std::string& cellFolder) {
    return cellFolder + "/" + kNewView;
}

bool liesInNewView(const std::string& path) {
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (equalIgnoringCase(std::string_view(path).substr(begin, end - begin), kNewView)) return true;
        begin = end + 1;
    }
    return false;
}

bool isView(const std::string& folder) {
    return fsutil::isPresentFile(folder + "/" + kViewMarker);
}

bool isToBeConverted(const std::string& cellFolder) {
    return !isView(newViewOf(cellFolder)) && isView(oldViewOf(cellFolder));
}

std::string newCellFileName(const std::string& cell, const std::string& extension) {
    // Other files and programs look for these two by the cell's name, so their extensions are spelled alike
    // in all cells.
    for (const char* rewritten : {kNetlist, kOptimizerFile}) {
        if (equalIgnoringCase(extension, rewritten)) return cell + "." + rewritten;
    }
    return cell + (equalIgnoringCase(extension, kPartProperties) ? "_sch." : ".") + extension;
}

std::string newProfileFileName(const std::string& profile, const std::string& extension) {
    return profile + "." + newOutputExtension(extension);
}

}  // namespace tvxconv
