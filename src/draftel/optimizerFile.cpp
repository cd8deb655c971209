// The optimizer file of a schematic: lines of a word and a quoted value, some of which name profile files
// and design profiles. Afterwards the profile files are beside it, under their new names. A design profile
// named without a folder is copied; one in a folder stays there and gets its absolute path.

#include "converter/fileSteps.h"
#include "converter/rewriteOptimizerFile.h"
#include "draftel/DraftelProjectConverter.h"
#include "draftel/layout.h"
#include "fsutil/paths.h"

namespace tvxconv {

using namespace draftel;

int DraftelProjectConverter::rewriteOptimizerFile(std::string& newPath, const std::string& oldPath,
                                                  const std::string& schematic,
                                                  const std::string& schematicFolder,
                                                  const std::string& extension) {
    const std::string target = schematicFolder + "/" + newSchematicFileName(schematic, extension);
    const OptimizerLine lines[] = {
        {kSimulationWord, kSimulationMark,
         [&](std::string& newValue, const std::string& value) {
             return newProfileFileName(newValue, value);
         }},
        {kExternalWord, kExternalMark,
         [&](std::string& newValue, const std::string& value) {
             return relocateDesignProfile(newValue, value, schematicFolder);
         }},
    };
    const int status = tvxconv::rewriteOptimizerFile(oldPath, target, lines);
    newPath = target;
    return status;
}

int DraftelProjectConverter::relocateDesignProfile(std::string& reference, const std::string& value,
                                                   const std::string& schematicFolder) {
    const fsutil::Reference written(value);
    if (!written.isBare()) return written.resolve(projectDir(), reference) ? 0 : 1;
    const std::string name = value;
    reference = name;
    const std::string file = projectDir() + "/" + name;
    std::string newPath;
    if (findRelocation(relocationKey(file, projectDir()), newPath) == 0) return 0;
    newPath = schematicFolder + "/" + name;
    bool isPresent = false;
    if (const int status = copyFileIfPresentOrReport(file, newPath, isPresent); status != 0) return status;
    if (isPresent) recordMove(file, newPath, destinationDir());
    return 0;
}

}  // namespace tvxconv
