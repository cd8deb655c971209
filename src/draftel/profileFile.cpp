// Rewriting a simulation profile file: lines of a key and a quoted value, which name the design, the
// deck, the data and output files, and numbered "+" lines that name further files. The new file lies
// beside the profile's folder, and names of moved files are written without a folder.

#include "converter/profileFiles.h"
#include "draftel/DraftelProjectConverter.h"
#include "fsutil/files.h"
#include "fsutil/paths.h"

namespace tvxconv {
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
    std::string projectDir;
    getProjectDir(projectDir);
    const std::string oldPath = projectDir + "/" + fileBase + ".sim";
    if (!fsutil::isPresentFile(oldPath)) return 0;
    const std::string profileFolder = schematicFolder + "/" + profile;
    const std::string newPath = profileFolder + ".sim";

    ProfileRules rules;
    rules.folder = projectDir;
    rules.netlist = schematic + ".net";
    rules.keys = kKeys;
    rules.newValue = [&](ProfileValue kind, const std::string& value) {
        if (kind == ProfileValue::profileFile) return profile + ".sim";
        if (kind == ProfileValue::deck) return profile + ".cir";
        std::string reference;
        const bool made = relocateOutputReference(reference, value, projectDir, fileBase, profile) == 0;
        return fsutil::withBackslashes(made ? reference : value);
    };
    // A line whose file cannot be copied stays as it is.
    rules.moveEntry = [&](const ListEntry& entry, std::string_view line, fsutil::LineWriter& writer) {
        const std::string place = profileFolder + "/" + entry.name;
        copyQueue_.await(profileFolder, place);
        if (fsutil::copyFile(entry.file, place) == 0) {
            writer.writeInPlaceOf(line, listEntryLine(entry));
        } else {
            writer.write(line);
        }
    };
    const int status = rewriteProfileFile(oldPath, newPath, rules);
    if (status == 0) recordMove(oldPath, newPath, destination);
    return status;
}

int DraftelProjectConverter::relocateOutputReference(std::string& reference, const std::string& value,
                                                     const std::string& projectDir,
                                                     const std::string& fileBase,
                                                     const std::string& profile) {
    return relocateOutputValue(*this, reference, value, projectDir, fileBase, profile);
}

}  // namespace tvxconv
