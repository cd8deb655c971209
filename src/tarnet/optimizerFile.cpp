// Rewriting the optimizer file of a cell: its "ext" lines name design profiles.

#include "converter/fileSteps.h"
#include "converter/rewriting.h"
#include "fsutil/paths.h"
#include "tarnet/TarnetProjectConverter.h"

namespace tvxconv {
namespace {

constexpr const char* kExternal = "ext";

}  // namespace

int TarnetProjectConverter::rewriteOptimizerFile(const std::string& sourcePath,
                                                 const std::string& destinationPath,
                                                 const std::string& destinationDirectory) {
    const auto newDesignProfile = [&](std::string& reference, const std::string& value) {
        return relocateDesignProfile(value, destinationDirectory, reference);
    };
    return rewriteLines(sourcePath, destinationPath, [&](std::string_view line, fsutil::LineWriter& writer) {
        if (fsutil::beginsWithKey(line, kExternal)) {
            rewriteValue(line, kExternal, ".mdp", newDesignProfile, writer);
        } else {
            writer.write(line);
        }
    });
}

// One that lies in the old view and is named without a folder comes along; one in a folder is named from the
// root. Any status other than 0 keeps the line as it is; 1 when there is no such file.
int TarnetProjectConverter::relocateDesignProfile(const std::string& value,
                                                  const std::string& destinationDirectory,
                                                  std::string& reference) const {
    std::string path;
    fsutil::toForwardSlashes(value, path);
    std::string oldView;
    getProjectDir(oldView);
    std::string folder;
    if (fsutil::folderOf(path, folder) != 0) {
        bool isPresent = false;
        const int status =
            copyFileIfPresentOrReport(oldView + "/" + path, destinationDirectory + "/" + path, isPresent);
        if (status != 0) return status;
        reference = path;
        return isPresent ? 0 : 1;
    }
    bool isRelative = false;
    fsutil::normaliseReference(path, isRelative);
    if (isRelative) return fsutil::resolveRelative(path, oldView, reference) == 0 ? 0 : 1;
    reference = path;
    return 0;
}

}  // namespace tvxconv
