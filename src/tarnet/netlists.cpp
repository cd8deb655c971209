// Rewriting the netlist of a cell, and the decks of its profiles that include it. The netlist lies in the new
// view, a deck two folders below.

#include "converter/decks.h"
#include "converter/rewriting.h"
#include "fsutil/files.h"
#include "fsutil/paths.h"
#include "tarnet/TarnetProjectConverter.h"

namespace tvxconv {

int TarnetProjectConverter::rewriteNetlist(const std::string& sourcePath, const std::string& destinationPath,
                                           const std::string& cellName) {
    // Of its includes only that of the parameter file survives. The decks name the others, and an include
    // that names no file serves nobody.
    return rewriteLines(sourcePath, destinationPath, [&](std::string_view line, fsutil::LineWriter& writer) {
        std::string value;
        if (!fsutil::beginsWithKey(line, kInclude)) {
            writer.write(line);
        } else if (fsutil::scanQuotedValue(line, value) == 1 && containsEither(value, ".par", ".PAR")) {
            writer.writeInPlaceOf(line, directiveLine(kInclude, "../" + cellName + ".par"));
        }
    });
}

int TarnetProjectConverter::rewriteCircuitIncludes(const std::string& sourceDirectory,
                                                   const std::string& sourcePath,
                                                   const std::string& destinationPath) {
    return rewriteDeck(sourcePath, destinationPath, "../../" + cellName_ + ".net",
                       [&](const std::string& value, std::string& reference) {
                           return relocateReference(sourceDirectory, value, reference);
                       });
}

int TarnetProjectConverter::relocateReference(const std::string& sourceDirectory, const std::string& name,
                                              std::string& result) {
    std::string path;
    fsutil::toForwardSlashes(name, path);
    result.clear();
    bool isRelative = false;
    fsutil::normaliseReference(path, isRelative);
    std::string file = path;
    if (isRelative) {
        // Looked up by its name alone, whatever folders stand before it: the old view is flat.
        std::string fileName;
        fsutil::fileNameOf(path, fileName);
        const bool goesUp = path.starts_with("../");
        if (fsutil::isPresentFile(sourceDirectory + (goesUp ? "/../" : "/") + fileName)) {
            result = (goesUp ? "../../../" : "../../") + fileName;
            return 0;
        }
        if (fsutil::resolveRelative(path, sourceDirectory, file) != 0) return 0;
    }
    if (isPresentReference(file)) result = file;
    return 0;
}

}  // namespace tvxconv
