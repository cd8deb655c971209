// What the project looks like after a conversion: the listing that a host shows, and the report file.

#include "converter/structure.h"
#include "draftel/DraftelProjectConverter.h"
#include "fsutil/files.h"

namespace tvxconv {

int DraftelProjectConverter::getNewStructure(std::vector<std::string>& lines) {
    int mode = 0;
    if (getMode(mode) != 0 || mode != 2) return 1;
    std::string destination;
    std::string designName;
    std::string designBase;
    getDestinationDir(destination);
    getDesignName(designName);
    getDesignFileBaseName(designBase);
    lines.push_back(destination);
    for (const std::string& name : {designName + ".opj", designBase + ".dsn", designBase + ".dbk"}) {
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
    std::string destination;
    getDestinationDir(destination);
    return writeReportFile(destination + "/" + reportPath, lines);
}

}  // namespace tvxconv
