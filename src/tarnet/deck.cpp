// The decks of a cell's profiles. They include the netlist, which is in the new view two folders above them.

#include "converter/rewriteDeck.h"
#include "fsutil/files.h"
#include "fsutil/paths.h"
#include "tarnet/TarnetProjectConverter.h"
#include "tarnet/layout.h"

namespace tvxconv {

using namespace tarnet;

int TarnetProjectConverter::rewriteCircuitIncludes(const std::string& sourceDirectory,
                                                   const std::string& sourcePath,
                                                   const std::string& destinationPath) {
    return rewriteDeck(sourcePath, destinationPath, "../../" + newCellFileName(cellName_, kNetlist),
                       [&](const std::string& value, std::string& reference) {
                           return relocateReference(sourceDirectory, value, reference);
                       });
}

int TarnetProjectConverter::relocateReference(const std::string& sourceDirectory, const std::string& name,
                                              std::string& result) {
    const fsutil::Reference written(name);
    result.clear();
    if (written.isRelative()) {
        // Looked up by its name alone, whatever folders come before it: the old view is flat.
        const std::string fileName = written.fileName();
        if (fsutil::isPresentFile(sourceDirectory + (written.goesUp() ? "/../" : "/") + fileName)) {
            result = (written.goesUp() ? "../../../" : "../../") + fileName;
            return 0;
        }
    }
    std::string file;
    if (written.resolve(sourceDirectory, file) && fsutil::isPresentFile(file)) result = file;
    return 0;
}

}  // namespace tvxconv
