#include "tarnet/layout.h"

#include <algorithm>
#include <iterator>

#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "tarnet/TarnetProjectConverter.h"

namespace tvxconv::tarnet {

using fsutil::equalIgnoringCase;

bool isCellName(const std::string& name) {
    return name.find('.') == std::string::npos;
}

std::string oldViewOf(const std::string& cellFolder) {
    return cellFolder + "/" + kOldView;
}

std::string newViewOf(const std::string& cellFolder) {
    return cellFolder + "/" + kNewView;
}

bool isView(const std::string& folder) {
    return fsutil::isPresentFile(folder + "/" + kViewMarker);
}

std::string newCellFileName(const std::string& cell, const std::string& extension) {
    // Other files and programs look for these two by the cell's name, so their extensions have the same
    // spelling in all cells.
    for (const char* rewritten : {kNetlist, kOptimizer}) {
        if (equalIgnoringCase(extension, rewritten)) return cell + "." + rewritten;
    }
    return cell + (equalIgnoringCase(extension, kPartProperties) ? "_sch." : ".") + extension;
}

}  // namespace tvxconv::tarnet

namespace tvxconv {

using namespace tarnet;

namespace {

using fsutil::equalIgnoringCase;

// The list that contains a file's extension decides how it is handled. The extension is everything after
// the first "." of the name. Default markers ("x-default.mrk") have one that is in no list.

// Copied under their own names.
constexpr const char* kCopied[] = {"lib", "prp", "olb",  "err", "ind",  "stl", "stm", "inc",
                                   "obk", "opj", "cmrk", "mkr", "dmap", "map", "bak", "log"};

// Named after the cell. "prp" is in both lists: the cell's own part properties are named after it, others
// keep their names.
constexpr const char* kOfTheCell[] = {"sim", "net",     "als",       "par",      "opt",      "aap",
                                      "prp", "opt.log", "monte.log", "sens.log", "smoke.log"};

// Named after their profile: their old names begin with its name.
constexpr const char* kOfAProfile[] = {"csd",      "dat",      "opt.dat", "mc.dat",  "sens.dat", "opt.csd",
                                       "mc.csd",   "sens.csd", "out",     "out.1",   "opt.out",  "mc.out",
                                       "sens.out", "mrk",      "prb",     "sim.1op", "sim.cir",  "sim.mif"};

template <std::size_t Count>
void append(std::vector<std::string>& list, const char* const (&entries)[Count]) {
    list.insert(list.end(), std::begin(entries), std::end(entries));
}

bool contains(const std::vector<std::string>& list, const std::string& extension) {
    return std::any_of(list.begin(), list.end(),
                       [&](const std::string& entry) { return equalIgnoringCase(entry, extension); });
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
    const bool isCellsOwn = equalIgnoringCase(extension, kPartProperties) &&
                            equalIgnoringCase(fileName, cellName_ + "-" + cellName_ + "." + kPartProperties);
    if (!isCellsOwn && contains(copyExtensions_, extension)) return Road::unchanged;
    if (contains(cellExtensions_, extension)) return Road::cell;
    if (contains(profileExtensions_, extension)) return Road::profile;
    return Road::none;
}

}  // namespace tvxconv
