#include "LibraryInspection.h"

#include <filesystem>
#include <system_error>

#include "converter/folderNames.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/paths.h"
#include "platform/platform.h"
#include "tarnet/TarnetProjectConverter.h"
#include "tarnet/layout.h"

namespace fsutil = tvxconv::fsutil;
namespace platform = tvxconv::platform;

LibraryInspection inspectLibrary(const std::string& library) {
    LibraryInspection result;
    tvxconv::forEachName(library, [&](const std::string& cell) {
        if (!tvxconv::tarnet::isCellName(cell)) return true;
        if (isConverted(library, cell)) {
            ++result.convertedBefore;
        } else if (tvxconv::tarnet::isView(tvxconv::tarnet::oldViewOf(library + "/" + cell))) {
            result.toConvert.push_back(cell);
        }
        return true;
    });
    return result;
}

bool isConverted(const std::string& library, const std::string& cell) {
    return tvxconv::tarnet::isView(tvxconv::tarnet::newViewOf(library + "/" + cell));
}

void removeUnfinishedMark(const std::string& library, const std::string& cell) {
    const std::string path =
        tvxconv::tarnet::newViewOf(library + "/" + cell) + "/" + tvxconv::tarnet::kViewMarker;
    platform::FileStatus status;
    const bool isEmptyFile = platform::getStatus(path.c_str(), status) == 0 &&
                             status.kind == platform::FileKind::regular && status.size == 0;
    if (isEmptyFile) fsutil::deleteFile(path);
}

bool isInView(const std::string& library, const std::string& file) {
    std::error_code error;
    const auto plain = [&](const std::string& path) {
        return std::filesystem::weakly_canonical(path, error).generic_string();
    };
    const std::string path = plain(file);
    const std::string folder = plain(library);
    std::string below;
    if (error || !fsutil::isBelowFolder(path, folder)) return false;
    fsutil::relativeToFolder(path, folder, below);
    // "./CELL/VIEW/..."
    const std::size_t cellEnd = below.find('/', 2);
    if (cellEnd == std::string::npos) return false;
    const std::string view = below.substr(cellEnd + 1, below.find('/', cellEnd + 1) - cellEnd - 1);
    return fsutil::equalIgnoringCase(view, tvxconv::tarnet::kOldView) ||
           fsutil::equalIgnoringCase(view, tvxconv::tarnet::kNewView);
}
