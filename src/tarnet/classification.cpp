// Which file goes where: a file of the old view is handled by the list that its extension is in. The
// extension is all that follows the first "." of the name, and default markers ("x-default.mrk") have one
// that is in no list.

#include <algorithm>
#include <iterator>

#include "fsutil/letterCase.h"
#include "fsutil/paths.h"
#include "tarnet/TarnetProjectConverter.h"
#include "tarnet/views.h"

namespace tvxconv {
namespace {

// Copied under their own names.
constexpr const char* kCopied[] = {"lib", "prp", "olb",  "err", "ind",  "stl", "stm", "inc",
                                   "obk", "opj", "cmrk", "mkr", "dmap", "map", "bak", "log"};

// Called after the cell. "prp" is in both lists: the cell's own part properties are called after it, those
// of others keep their names.
constexpr const char* kOfTheCell[] = {"sim", "net",     "als",       "par",      "opt",      "aap",
                                      "prp", "opt.log", "monte.log", "sens.log", "smoke.log"};

// Called after their profile, whose name their own begins with.
constexpr const char* kOfAProfile[] = {"csd",      "dat",      "opt.dat", "mc.dat",  "sens.dat", "opt.csd",
                                       "mc.csd",   "sens.csd", "out",     "out.1",   "opt.out",  "mc.out",
                                       "sens.out", "mrk",      "prb",     "sim.1op", "sim.cir",  "sim.mif"};

template <std::size_t Count>
void append(std::vector<std::string>& list, const char* const (&entries)[Count]) {
    list.insert(list.end(), std::begin(entries), std::end(entries));
}

bool contains(const std::vector<std::string>& list, const std::string& extension) {
    return std::any_of(list.begin(), list.end(),
                       [&](const std::string& entry) { return fsutil::equalIgnoringCase(entry, extension); });
}

}  // namespace

int TarnetProjectConverter::classifyCellFiles() {
    append(copyExtensions_, kCopied);
    append(cellExtensions_, kOfTheCell);
    append(profileExtensions_, kOfAProfile);
    return 0;
}

TarnetProjectConverter::Road TarnetProjectConverter::roadOf(const std::string& fileName,
                                                            const std::string& extension) const {
    if (extension.empty()) return Road::none;
    const bool isCellsOwn =
        fsutil::equalIgnoringCase(extension, kPartProperties) &&
        fsutil::equalIgnoringCase(fileName, cellName_ + "-" + cellName_ + "." + kPartProperties);
    if (!isCellsOwn && contains(copyExtensions_, extension)) return Road::unchanged;
    if (contains(cellExtensions_, extension)) return Road::cell;
    if (contains(profileExtensions_, extension)) return Road::profile;
    return Road::none;
}

int TarnetProjectConverter::placeInNewView(const std::string& fileName, std::string& place) const {
    std::string extension;
    std::string profile;
    fsutil::extensionOf(fileName, extension);
    fsutil::baseNameOf(fileName, profile);
    std::string result;
    switch (roadOf(fileName, extension)) {
        case Road::none:
            break;
        case Road::unchanged:
            result = fileName;
            break;
        case Road::cell:
            result = fsutil::equalIgnoringCase(extension, kProfileFile)
                         ? std::string(kProfilesFolder) + "/" + fileName
                         : newCellFileName(cellName_, extension);
            break;
        case Road::profile:
            result =
                std::string(kProfilesFolder) + "/" + profile + "/" + newProfileFileName(profile, extension);
            break;
    }
    place = result;
    return place.empty() ? 1 : 0;
}

}  // namespace tvxconv
