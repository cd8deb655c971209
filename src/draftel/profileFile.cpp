// Rewriting a simulation profile file: lines of a key and a quoted value, which name the design, the deck,
// the data and output files, and numbered "+" lines that name other files. The new file is beside the
// profile's folder, and moved files are named without a folder.

#include "converter/outputReference.h"
#include "converter/rewriteProfile.h"
#include "draftel/DraftelProjectConverter.h"
#include "draftel/layout.h"
#include "fsutil/files.h"
#include "fsutil/paths.h"

namespace tvxconv {

using namespace draftel;

namespace {

constexpr ProfileKey kKeys[] = {
    {"ProfileFile", ".sim", ".sim", ProfileValue::profileFile},
    {"NetlistFile", ".sim.cir", ".sim.cir", ProfileValue::deck},
    {"DataFile", ".dat", ".csd", ProfileValue::output},
    {"OutFile", ".out", ".out", ProfileValue::output},
};

}  // namespace

int DraftelProjectConverter::rewriteSimProfile(const std::string& fileBase, const std::string& profile,
                                               const std::string& destination,
                                               const std::string& schematicFolder,
                                               const std::string& schematic) {
    const std::string oldPath = oldProfileFile(fileBase);
    const std::string profileFolder = schematicFolder + "/" + profile;
    const std::string newPath = profileFolder + "." + kProfile;

    ProfileRules rules;
    rules.folder = projectDir();
    rules.netlist = newSchematicFileName(schematic, kNetlist);
    rules.keys = kKeys;
    rules.newValue = [&](ProfileValue kind, const std::string& value) {
        if (kind == ProfileValue::profileFile) return profile + "." + kProfile;
        if (kind == ProfileValue::deck) return newOutputName(profile, kOldDeckExtension);
        std::string reference;
        const bool made = relocateOutputReference(reference, value, projectDir(), fileBase, profile) == 0;
        return fsutil::toBackslashes(made ? reference : value);
    };
    // A line whose file cannot be copied stays unchanged.
    rules.moveEntry = [&](const ListEntry& entry, std::string_view line, fsutil::LineWriter& writer) {
        if (fsutil::copyWholeFile(entry.file, profileFolder + "/" + entry.name) == 0) {
            writer.writeInPlaceOf(line, listEntryLine(entry));
        } else {
            writer.write(line);
        }
    };
    bool isPresent = false;
    const int status = rewriteProfileIfPresent(oldPath, newPath, rules, isPresent);
    if (isPresent && status == 0) recordMove(oldPath, newPath, destination);
    return status;
}

int DraftelProjectConverter::relocateOutputReference(std::string& reference, const std::string& value,
                                                     const std::string& projectDir,
                                                     const std::string& fileBase,
                                                     const std::string& profile) {
    return relocateOutputValue(*this, reference, value, projectDir, fileBase, profile);
}

}  // namespace tvxconv
