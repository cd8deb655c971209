// The files that belong to a schematic and to none of its profiles. Most are copied under a name made from
// the schematic's alone; the optimizer file and the advanced-analysis profile are rewritten. Other steps
// handle the netlist and the profile files.

#include "converter/fileSteps.h"
#include "draftel/DraftelProjectConverter.h"
#include "draftel/layout.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"

namespace tvxconv {

using namespace draftel;

using fsutil::equalIgnoringCase;

int DraftelProjectConverter::relocateSchematicFiles(const std::string& designBase,
                                                    const std::string& schematic,
                                                    const std::string& destination,
                                                    const std::string& schematicFolder) {
    for (const std::string& extension : schematicLevelExtensions_) {
        if (equalIgnoringCase(extension, kNetlist) || equalIgnoringCase(extension, kProfile)) continue;
        const std::string oldPath =
            oldSchematicFile(projectDir(), designDir_, designBase, schematic, extension);
        if (!fsutil::isPresentFile(oldPath)) continue;
        // A file that cannot be written must not stop the schematic's other files.
        std::string newPath;
        if (equalIgnoringCase(extension, kOptimizer)) {
            rewriteOptimizerFile(newPath, oldPath, schematic, schematicFolder, extension);
        } else if (equalIgnoringCase(extension, kAnalysis)) {
            relocateAnalysisProfile(newPath, oldPath, schematic, schematicFolder, extension);
        } else {
            copySchematicFile(newPath, oldPath, schematic, schematicFolder, extension);
        }
        recordMove(oldPath, newPath, destination);
    }
    return 0;
}

int DraftelProjectConverter::copySchematicFile(std::string& newPath, const std::string& oldPath,
                                               const std::string& schematic,
                                               const std::string& schematicFolder,
                                               const std::string& extension) {
    const std::string target = schematicFolder + "/" + newSchematicFileName(schematic, extension);
    const int status = copyFileOrReport(oldPath, target);
    newPath = target;
    return status;
}

}  // namespace tvxconv
