// Rewriting netlists and decks: the netlist of a schematic, and the deck of a profile that includes it.
// Both are text for a circuit simulator, with directives that name further files. The two treat an
// include differently, on purpose: see each.

#include "converter/decks.h"
#include "converter/rewriting.h"
#include "draftel/DraftelProjectConverter.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/lines.h"
#include "fsutil/paths.h"

namespace tvxconv {
namespace {

// The path of a moved file, recorded relative to the destination, as seen from a profile's folder: two
// levels below the simulation root, three below the destination.
std::string seenFromProfileFolder(const std::string& recordedPath, const std::string& designName) {
    const std::string place = recordedPath.substr(recordedPath.starts_with("./") ? 2 : 0);
    const std::size_t slash = place.find('/');
    if (slash != std::string::npos) {
        const std::string first = place.substr(0, slash);
        const bool inRoot = designName.empty()
                                ? fsutil::endsWithIgnoringCase(first, "-TevrixFiles")
                                : fsutil::equalIgnoringCase(first, designName + "-TevrixFiles");
        if (inRoot) return "../../" + place.substr(slash + 1);
    }
    return "../../../" + place;
}

}  // namespace

int DraftelProjectConverter::relocateSchematicNetlist(const std::string& designBase,
                                                      const std::string& schematic,
                                                      const std::string& destination,
                                                      const std::string& schematicFolder) {
    std::string designDir;
    getDesignDir(designDir);
    const std::string oldPath = designDir + "/" + designBase + "-" + schematic + ".net";
    if (!fsutil::isPresentFile(oldPath)) return 0;
    const std::string newPath = schematicFolder + "/" + schematic + ".net";
    // Of its includes only the parameter file survives: the deck names the others. A deck includes the
    // netlist from one level further down, and from there the parameter file is one level up.
    const int status = rewriteLines(oldPath, newPath, [&](std::string_view line, fsutil::LineWriter& writer) {
        std::string value;
        if (!fsutil::beginsWithKey(line, kInclude) || fsutil::scanQuotedValue(line, value) != 1) {
            writer.write(line);
        } else if (containsEither(value, ".par", ".PAR")) {
            writer.writeInPlaceOf(line, directiveLine(kInclude, "../" + schematic + ".par"));
        }
    });
    if (status == 0) recordMove(oldPath, newPath, destination);
    return status;
}

int DraftelProjectConverter::rewriteSimulationNetlist(std::string& newPath, const std::string& oldPath,
                                                      const std::string& projectDir,
                                                      const std::string& schematic,
                                                      const std::string& profile,
                                                      const std::string& profileFolder,
                                                      const std::string& extension) {
    const std::string target = profileFolder + "/" + profile + "." + extension;
    newPath = target;
    return rewriteDeck(oldPath, target, "../" + schematic + ".net",
                       [&](const std::string& value, std::string& reference) {
                           return resolveIncludeReference(projectDir, value, reference, 1);
                       });
}

int DraftelProjectConverter::resolveIncludeReference(const std::string& baseFolder, const std::string& value,
                                                     std::string& reference, int marker) {
    std::string path;
    fsutil::toForwardSlashes(value, path);
    reference.clear();
    bool isRelative = false;
    fsutil::normaliseReference(path, isRelative);
    if (isRelative && path.starts_with("./")) {
        // Looked up by its name alone: the flat layout has all moved files in one folder.
        std::string name;
        std::string recorded;
        fsutil::fileNameOf(path, name);
        if (findRelocation("./" + name, recorded) == 0) {
            std::string designName;
            getDesignName(designName);
            fsutil::normaliseReference(recorded, isRelative);
            reference = isRelative && marker != 0 ? seenFromProfileFolder(recorded, designName) : recorded;
            return 0;
        }
    }
    std::string file = path;
    if (isRelative && fsutil::resolveRelative(path, baseFolder, file) != 0) return 1;
    if (!fsutil::isPresentFile(file)) return 0;
    fsutil::normaliseReference(file, isRelative);
    if (isRelative && marker != 0) {
        reference = "../../" + (file.starts_with("./") ? file.substr(2) : file);
    } else {
        reference = file;
    }
    return 0;
}

}  // namespace tvxconv
