// Rewriting a simulation profile file of a cell. The new file is beside the profile's folder under its old
// name; the profile has the same name.

#include "converter/outputReference.h"
#include "converter/rewriteProfile.h"
#include "fsutil/files.h"
#include "tarnet/TarnetProjectConverter.h"
#include "tarnet/layout.h"

namespace tvxconv {

using namespace tarnet;

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
    ProfileRules rules;
    rules.folder = sourceDirectory;
    rules.netlist = newCellFileName(cellName, kNetlist);
    rules.keys = kKeys;
    rules.newValue = [&](ProfileValue kind, const std::string& value) {
        if (kind == ProfileValue::deck) return newOutputName(profileName, kOldDeckExtension);
        std::string reference;
        const bool made =
            relocateOutputValue(*this, reference, value, sourceDirectory, profileName, profileName) == 0;
        return made ? reference : value;
    };
    // A line whose file cannot be copied is left out.
    rules.moveEntry = [&](const ListEntry& entry, std::string_view line, fsutil::LineWriter& writer) {
        const std::string copy = profilesDirectory + "/" + profileName + "/" + entry.name;
        if (fsutil::copyWholeFile(entry.file, copy) == 0) writer.writeInPlaceOf(line, listEntryLine(entry));
    };
    bool isPresent = false;
    return rewriteProfileIfPresent(sourceDirectory + "/" + fileName, profilesDirectory + "/" + fileName,
                                   rules, isPresent);
}

}  // namespace tvxconv
