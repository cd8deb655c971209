#include "converter/fileSteps.h"

#include "errors/errors.h"
#include "fsutil/files.h"

namespace tvxconv {

int ensureDirectoryOrReport(const std::string& path) {
    // Most folders are new, and making one shows whether it is.
    constexpr int kMode = 0777;
    if (fsutil::isPathText(path) && fsutil::makeDirectory(path.c_str(), kMode) == 0) return 0;
    return fsutil::ensureDirectory(path) == 0 ? 0 : reportError(ERR_CREATE_DIRECTORY, path);
}

int copyFileOrReport(const std::string& source, const std::string& destination) {
    if (fsutil::copyWholeFile(source, destination) == 0) return 0;
    return reportError(ERR_COPY_FILE, source, destination);
}

int copyFileIfPresentOrReport(const std::string& source, const std::string& destination, bool& isPresent) {
    if (fsutil::copyWholeFileIfPresent(source, destination, isPresent) == 0) return 0;
    return reportError(ERR_COPY_FILE, source, destination);
}

}  // namespace tvxconv
