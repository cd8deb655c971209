// What the project looks like after a conversion: the listing that a host shows, and the report file.

#include <memory>

#include "converter/errors.h"
#include "draftel/DraftelProjectConverter.h"
#include "fsutil/files.h"
#include "fsutil/lines.h"
#include "fsutil/paths.h"

namespace tvxconv {
namespace {

constexpr const char* kIndent = "    ";

// Appends the path of a folder and, indented, the names of its files. An entry counts as a folder when
// its name has no "."; those go to `subFolders`, by name. False, with nothing appended, when the
// folder cannot be listed.
bool listFolder(const std::string& folder, std::vector<std::string>& lines,
                std::vector<std::string>& subFolders) {
    subFolders.clear();
    fsutil::DirectoryListing* listing = nullptr;
    if (fsutil::openDirectory(folder, listing) != 0) return false;
    const std::unique_ptr<fsutil::DirectoryListing, int (*)(fsutil::DirectoryListing*)> closing(
        listing, fsutil::closeDirectory);
    lines.push_back(folder);
    std::string name;
    std::string extension;
    while (fsutil::readDirectory(listing, name) == 0) {
        if (fsutil::extensionOf(name, extension) != 0) {
            subFolders.push_back(name);
        } else if (!extension.empty()) {
            lines.push_back(kIndent + name);
        }
    }
    return true;
}

}  // namespace

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
    const std::string path = destination + "/" + reportPath;
    fsutil::LineWriter writer;
    if (writer.open(path) != 0) return reportError(ERR_OPEN_FOR_WRITING, path);
    writer.write("The conversion of the project was successful.\n\n");
    writer.write("The new directory structure is as follows:\n\n");
    for (const std::string& line : lines) {
        writer.write(line);
        writer.write("\n");
    }
    writer.close();  // a report that could be opened counts as written
    return 0;
}

}  // namespace tvxconv
