// Rewriting a simulation profile file of a cell. The new file lies beside the profile's folder under its old
// name; the profile is called after it.

#include "converter/profileFiles.h"
#include "fsutil/files.h"
#include "tarnet/TarnetProjectConverter.h"

namespace tvxconv {
namespace {

constexpr ProfileKey kKeys[] = {
    {"NetlistFile", ".sim.cir", ".sim.cir", ProfileValue::deck},
    {"DataFile", ".dat", ".csd", ProfileValue::output},
    {"OutFile", ".out", ".out", ProfileValue::output},
};

}  // namespace

int TarnetProjectConverter::rewriteSimProfile(const std::string& sourceDirectory,
                                              const std::string& profilesDirectory,
                                              const std::string& fileName, const std::string& profileName,
                                              const std::string& cellName) {
    const std::string oldPath = sourceDirectory + "/" + fileName;
    if (!fsutil::isPresentFile(oldPath)) return 0;
    ProfileRules rules;
    rules.folder = sourceDirectory;
    rules.netlist = cellName + ".net";
    rules.keys = kKeys;
    rules.isPresent = [&](const std::string& file) { return isPresentReference(file); };
    rules.newValue = [&](ProfileValue kind, const std::string& value) {
        if (kind == ProfileValue::deck) return profileName + ".cir";
        std::string reference;
        const bool made =
            relocateOutputValue(*this, reference, value, sourceDirectory, profileName, profileName) == 0;
        return made ? reference : value;
    };
    // A line whose file cannot be copied is left out.
    rules.moveEntry = [&](const ListEntry& entry, std::string_view line, fsutil::LineWriter& writer) {
        const std::string copy = profilesDirectory + "/" + profileName + "/" + entry.name;
        if (fsutil::copyFile(entry.file, copy) == 0) {
            writer.writeInPlaceOf(line, listEntryLine(entry));
        } else {
            awaitTurn();  // nothing else would tell that it failed
        }
    };
    return rewriteProfileFile(oldPath, profilesDirectory + "/" + fileName, rules);
}

}  // namespace tvxconv
