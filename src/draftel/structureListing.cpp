// The project after a conversion: the listing that a host shows, and the report file.

#include "converter/report.h"
#include "converter/structure.h"
#include "draftel/DraftelProjectConverter.h"
#include "draftel/layout.h"
#include "fsutil/files.h"

namespace tvxconv {

using namespace draftel;

int DraftelProjectConverter::getNewStructure(std::vector<std::string>& lines) {
    if (mode() != kIntoDestination) return 1;
    const std::string& destination = destinationDir();
    lines.push_back(destination);
    for (const std::string& name : {designName() + "." + kProject, designFileBaseName_ + "." + kDesign,
                                    designFileBaseName_ + "." + kDesignBackup}) {
        if (fsutil::isPresentFile(destination + "/" + name)) lines.push_back(kIndent + name);
    }
    const std::string root = simulationRoot();
    std::vector<std::string> schematics;
    if (!listFolder(root, lines, schematics)) return 0;
    for (const std::string& schematic : schematics) {
        const std::string schematicFolder = root + "/" + schematic;
        std::vector<std::string> profiles;
        if (!listFolder(schematicFolder, lines, profiles)) continue;
        for (const std::string& profile : profiles) {
            std::vector<std::string> deeper;  // not listed
            listFolder(schematicFolder + "/" + profile, lines, deeper);
        }
    }
    return 0;
}

int DraftelProjectConverter::writeReport(const std::vector<std::string>& lines,
                                         const std::string& reportPath) {
    return writeReportFile(destinationDir() + "/" + reportPath, lines);
}

}  // namespace tvxconv
