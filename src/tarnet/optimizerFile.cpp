// The optimizer file of a cell: its "ext" lines name design profiles. One that is in the old view and named
// without a folder is copied; one in a folder stays there and gets its absolute path.

#include "converter/fileSteps.h"
#include "converter/rewriteOptimizerFile.h"
#include "fsutil/paths.h"
#include "tarnet/TarnetProjectConverter.h"

namespace tvxconv {

int TarnetProjectConverter::rewriteOptimizerFile(const std::string& sourcePath,
                                                 const std::string& destinationPath,
                                                 const std::string& destinationDirectory) {
    const OptimizerLine lines[] = {
        {kExternalWord, kExternalMark,
         [&](std::string& newValue, const std::string& value) {
             return relocateDesignProfile(value, destinationDirectory, newValue);
         }},
    };
    return tvxconv::rewriteOptimizerFile(sourcePath, destinationPath, lines);
}

// Returns 1 if there is no such file.
int TarnetProjectConverter::relocateDesignProfile(const std::string& value,
                                                  const std::string& destinationDirectory,
                                                  std::string& reference) const {
    const fsutil::Reference written(value);
    if (!written.isBare()) return written.resolve(projectDir(), reference) ? 0 : 1;
    bool isPresent = false;
    const int status =
        copyFileIfPresentOrReport(projectDir() + "/" + value, destinationDirectory + "/" + value, isPresent);
    if (status != 0) return status;
    reference = value;
    return isPresent ? 0 : 1;
}

}  // namespace tvxconv
