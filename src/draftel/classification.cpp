// Which file is whose: a file of the flat layout is handled by the list that its extension is in. The
// order is that in which the steps walk, and thereby the order of moves and of the last error.

#include <iterator>

#include "draftel/DraftelProjectConverter.h"

namespace tvxconv {
namespace {

// "<design>.<extension>"
constexpr const char* kDesignLevel[] = {"lib", "prp", "olb", "err", "ind", "stl", "inc", "obk"};

// "<design>-<schematic>.<extension>"; "prp" is in both lists: a design and a schematic each have one
constexpr const char* kSchematicLevel[] = {"sim",       "net",      "als",       "par",
                                           "opt",       "aap",      "prp",       "opt.log",
                                           "monte.log", "sens.log", "smoke.log", "default.mrk"};

// "<design>-<schematic>-<profile>.<extension>"
constexpr const char* kProfileLevel[] = {"csd",      "dat",      "opt.dat", "mc.dat",  "sens.dat", "opt.csd",
                                         "mc.csd",   "sens.csd", "out",     "out.1",   "opt.out",  "mc.out",
                                         "sens.out", "prb",      "mrk",     "sim.1op", "sim.cir",  "sim.mif"};

constexpr const char* kProjectFolders[] = {"Outputs", "Design Resources", "Tevrix Resources", "Translator",
                                           "Library"};

constexpr const char* kFolderPairs[][2] = {{"Design Resources", "Library"},
                                           {"Simulation Resources", "Indesign"}};

template <std::size_t Count>
void append(std::vector<std::string>& list, const char* const (&entries)[Count]) {
    list.insert(list.end(), std::begin(entries), std::end(entries));
}

}  // namespace

int DraftelProjectConverter::classifySimulationFiles() {
    append(designLevelExtensions_, kDesignLevel);
    append(schematicLevelExtensions_, kSchematicLevel);
    append(profileLevelExtensions_, kProfileLevel);
    append(projectFolderNames_, kProjectFolders);
    for (const auto& [folder, subFolder] : kFolderPairs) folderMap_.try_emplace(folder, subFolder);
    return 0;
}

}  // namespace tvxconv
