// The deck of a profile: text for the circuit simulator with directives that name other files.

#include "converter/rewriteDeck.h"
#include "draftel/DraftelProjectConverter.h"
#include "draftel/layout.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/paths.h"

namespace tvxconv {

using namespace draftel;

namespace {

// The path of a moved file relative to a profile's folder, which is two levels below the simulation root
// and three below the destination. `recordedPath` is relative to the destination.
std::string seenFromProfileFolder(const std::string& recordedPath, const std::string& designName) {
    const std::string place = recordedPath.substr(recordedPath.starts_with("./") ? 2 : 0);
    const std::size_t slash = place.find('/');
    if (slash != std::string::npos) {
        const std::string first = place.substr(0, slash);
        const bool inRoot = designName.empty()
                                ? fsutil::endsWithIgnoringCase(first, simulationRootName(""))
                                : fsutil::equalIgnoringCase(first, simulationRootName(designName));
        if (inRoot) return "../../" + place.substr(slash + 1);
    }
    return "../../../" + place;
}

}  // namespace

int DraftelProjectConverter::rewriteSimulationNetlist(std::string& newPath, const std::string& oldPath,
                                                      const std::string& projectDir,
                                                      const std::string& schematic,
                                                      const std::string& profile,
                                                      const std::string& profileFolder,
                                                      const std::string& extension) {
    const std::string target = profileFolder + "/" + profile + "." + extension;
    newPath = target;
    return rewriteDeck(oldPath, target, "../" + newSchematicFileName(schematic, kNetlist),
                       [&](const std::string& value, std::string& reference) {
                           return resolveIncludeReference(projectDir, value, reference, 1);
                       });
}

int DraftelProjectConverter::resolveIncludeReference(const std::string& baseFolder, const std::string& value,
                                                     std::string& reference, int marker) {
    const fsutil::Reference written(value);
    reference.clear();
    std::string recorded;
    // Looked up by its name alone: in the flat layout all files that move are in one folder.
    if (written.isRelative() && !written.goesUp() &&
        findRelocation("./" + written.fileName(), recorded) == 0) {
        const fsutil::Reference moved(recorded);
        reference = moved.isRelative() && marker != 0 ? seenFromProfileFolder(moved.path(), designName())
                                                      : moved.path();
        return 0;
    }
    std::string file;
    if (!written.resolve(baseFolder, file)) return 1;
    if (!fsutil::isPresentFile(file)) return 0;
    const fsutil::Reference target(file);
    if (target.isRelative() && marker != 0) {
        reference = "../../" + target.path().substr(target.goesUp() ? 0 : 2);
    } else {
        reference = target.path();
    }
    return 0;
}

}  // namespace tvxconv
