// The netlist of a schematic, which the decks of its profiles include.

#include "converter/rewriteDeck.h"
#include "draftel/DraftelProjectConverter.h"
#include "draftel/layout.h"
#include "fsutil/files.h"

namespace tvxconv {

using namespace draftel;

int DraftelProjectConverter::relocateSchematicNetlist(const std::string& designBase,
                                                      const std::string& schematic,
                                                      const std::string& destination,
                                                      const std::string& schematicFolder) {
    const std::string oldPath = oldSchematicFile(projectDir(), designDir_, designBase, schematic, kNetlist);
    if (!fsutil::isPresentFile(oldPath)) return 0;
    const std::string newPath = schematicFolder + "/" + newSchematicFileName(schematic, kNetlist);
    const int status = rewriteNetlist(oldPath, newPath, schematic, EmptyInclude::isKept);
    if (status == 0) recordMove(oldPath, newPath, destination);
    return status;
}

}  // namespace tvxconv
