#include "draftel/profileRecords.h"

#include "draftel/DraftelProjectConverter.h"
#include "draftel/layout.h"
#include "errors/errors.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/lines.h"
#include "fsutil/paths.h"
#include "tvx_wobj/tvx_wobj.h"

namespace tvxconv {

using namespace draftel;

void ProfileRecords::add(ProfileRecord record) {
    const auto [place, isNew] =
        byFileBase_.try_emplace(fsutil::toLowerCase(record.fileBase), records_.size());
    if (!isNew) return;
    try {
        records_.push_back(std::move(record));
    } catch (...) {  // no memory: do not leave half a record
        byFileBase_.erase(place);
        throw;
    }
}

const ProfileRecord* ProfileRecords::find(const std::string& fileBase) const {
    const auto found = byFileBase_.find(fsutil::toLowerCase(fileBase));
    return found == byFileBase_.end() ? nullptr : &records_[found->second];
}

int DraftelProjectConverter::discoverProfiles() {
    tvx_wobj::Strings profileFiles;
    tvx_wobj::Strings profileNames;
    std::string active;
    if (tvx_wobj::readSimProfiles(projectPath(), profileFiles, profileNames, active, true) != 0) {
        return reportError(ERR_READ_FILE, projectPath());
    }
    if (designFileBaseName_.empty()) return 0;
    for (const std::string& registeredPath : profileFiles) {
        const std::string fileName = fsutil::fileNameOf(registeredPath);
        if (fileName.empty()) continue;
        const std::string fileBase = fsutil::baseNameOf(fileName);
        ProfileNames names;
        if (readProfileNames(fileBase, names) != 0) continue;
        profileRecords_.add({fileBase, names.profile, names.schematic, registeredPath});
    }
    return 0;
}

int DraftelProjectConverter::readProfileNames(const std::string& fileBase, ProfileNames& names) const {
    names = ProfileNames();
    const std::string path = oldProfileFile(fileBase);
    fsutil::LineReader reader;
    if (reader.open(path) != 0) {
        // A file that exists but cannot be opened now (too many are open, say) is not absent.
        return fsutil::isPresentFile(path) ? reportError(ERR_OPEN_FOR_READING, path) : 0;
    }
    std::string_view line;
    while (reader.next(line)) {
        const bool isProfile = fsutil::beginsWithKey(line, "ProfileName");
        if (!isProfile && !fsutil::beginsWithKey(line, "RootSchematics")) continue;
        std::string value;
        if (fsutil::scanQuotedValue(line, value) != 1) return 1;
        (isProfile ? names.profile : names.schematic) = value;
        (isProfile ? names.profileLine : names.schematicLine) = reader.lineNumber();
    }
    return reader.failed() ? reportError(ERR_OPEN_FOR_READING, path) : 0;
}

int DraftelProjectConverter::addProfileRecord(const std::string& fileBase, const std::string& profile,
                                              const std::string& schematic,
                                              const std::string& registeredPath) {
    profileRecords_.add({fileBase, profile, schematic, registeredPath});
    return 0;
}

int DraftelProjectConverter::findProfileRecord(const std::string& fileBase, std::string& profile,
                                               std::string& schematic, std::string& registeredPath) const {
    const ProfileRecord* found = profileRecords_.find(fileBase);
    const ProfileRecord record = found != nullptr ? *found : ProfileRecord();
    profile = record.profile;
    schematic = record.schematic;
    registeredPath = record.registeredPath;
    return found != nullptr ? 0 : 1;
}

int DraftelProjectConverter::getProfilesOfSchematic(const std::string& schematic,
                                                    std::vector<std::string>& fileBases,
                                                    std::vector<std::string>& profiles) const {
    fileBases.clear();
    profiles.clear();
    for (const ProfileRecord& record : profileRecords_.all()) {
        if (!fsutil::equalIgnoringCase(record.schematic, schematic)) continue;
        fileBases.push_back(record.fileBase);
        profiles.push_back(record.profile);
    }
    return 0;
}

int DraftelProjectConverter::newProfileFileName(std::string& newName, const std::string& oldName) const {
    const ProfileRecord* record = profileRecords_.find(fsutil::baseNameOf(oldName));
    newName = record != nullptr ? record->profile + "." + kProfile : std::string();
    return record != nullptr ? 0 : 1;
}

}  // namespace tvxconv
