#include "draftel/DraftelProjectConverter.h"

#include <utility>

#include "converter/errors.h"
#include "fsutil/paths.h"

namespace tvxconv {

using fsutil::toForwardSlashes;
using fsutil::toLowerCase;

namespace {

// Room for one more element, so that adding it cannot fail.
template <class Element>
void makeRoom(std::vector<Element>& list) {
    if (list.size() == list.capacity()) list.reserve(2 * list.size() + 1);
}

}  // namespace

DraftelProjectConverter::DraftelProjectConverter(const char* projectPath) : ProjectConverter(projectPath) {}

int DraftelProjectConverter::getLastErrorCode(int& code) {
    return tvxconv::getLastErrorCode(code);
}

int DraftelProjectConverter::getLastErrorMessage(std::string& message) {
    return tvxconv::getLastErrorMessage(message);
}

int DraftelProjectConverter::setDesignFileBaseName(const std::string& name) {
    designFileBaseName_ = name;
    return 0;
}

int DraftelProjectConverter::getDesignFileBaseName(std::string& name) const {
    return readField(designFileBaseName_, name);
}

int DraftelProjectConverter::setDesignFilePath(const std::string& path) {
    toForwardSlashes(path, designFilePath_);
    return 0;
}

int DraftelProjectConverter::getDesignFilePath(std::string& path) const {
    return readField(designFilePath_, path);
}

int DraftelProjectConverter::setDesignDir(const std::string& path) {
    toForwardSlashes(path, designDir_);
    return 0;
}

int DraftelProjectConverter::getDesignDir(std::string& path) const {
    return readField(designDir_, path);
}

int DraftelProjectConverter::setRequestedMode(int mode) {
    if (requestedMode_ == 0) requestedMode_ = mode;
    return 0;
}

int DraftelProjectConverter::getRequestedMode(int& mode) const {
    mode = requestedMode_;
    return 0;
}

int DraftelProjectConverter::addProfileRecord(const std::string& fileBase, const std::string& profile,
                                              const std::string& schematic,
                                              const std::string& registeredPath) {
    std::string key;
    toLowerCase(fileBase, key);
    if (recordOfFileBase_.contains(key)) return 0;
    auto record =
        std::make_unique<ProfileRecord>(ProfileRecord{fileBase, profile, schematic, registeredPath});
    std::string schematicKey;
    toLowerCase(schematic, schematicKey);
    std::vector<std::size_t>& ofSchematic = recordsOfSchematic_[schematicKey];
    makeRoom(ofSchematic);
    makeRoom(profileRecords_);
    // From here on nothing can fail once the key is in: no record is half there when memory runs out.
    recordOfFileBase_.emplace(std::move(key), profileRecords_.size());
    ofSchematic.push_back(profileRecords_.size());
    profileRecords_.push_back(std::move(record));
    return 0;
}

int DraftelProjectConverter::findProfileRecord(const std::string& fileBase, std::string& profile,
                                               std::string& schematic, std::string& registeredPath) const {
    std::string key;
    toLowerCase(fileBase, key);
    profile.clear();
    schematic.clear();
    registeredPath.clear();
    const auto found = recordOfFileBase_.find(key);
    if (found == recordOfFileBase_.end()) return 1;
    const ProfileRecord& record = *profileRecords_[found->second];
    profile = record.profile;
    schematic = record.schematic;
    registeredPath = record.registeredPath;
    return 0;
}

int DraftelProjectConverter::getProfilesOfSchematic(const std::string& schematic,
                                                    std::vector<std::string>& fileBases,
                                                    std::vector<std::string>& profiles) const {
    std::string key;
    toLowerCase(schematic, key);
    fileBases.clear();
    profiles.clear();
    const auto found = recordsOfSchematic_.find(key);
    if (found == recordsOfSchematic_.end()) return 0;
    for (const std::size_t index : found->second) {
        fileBases.push_back(profileRecords_[index]->fileBase);
        profiles.push_back(profileRecords_[index]->profile);
    }
    return 0;
}

int DraftelProjectConverter::newProfileFileName(std::string& newName, const std::string& oldName) const {
    std::string fileBase;
    std::string profile;
    std::string schematic;
    std::string registeredPath;
    fsutil::baseNameOf(oldName, fileBase);
    newName.clear();
    if (findProfileRecord(fileBase, profile, schematic, registeredPath) != 0) return 1;
    newName = profile + ".sim";
    return 0;
}

std::string DraftelProjectConverter::simulationRoot() const {
    std::string destination;
    std::string designName;
    getDestinationDir(destination);
    getDesignName(designName);
    return destination + "/" + designName + "-TevrixFiles";
}

std::string DraftelProjectConverter::recordedOldPath(const std::string& oldPath,
                                                     const std::string& projectDir) const {
    return relocationKey(oldPath, projectDir);
}

void DraftelProjectConverter::recordMove(const std::string& oldPath, const std::string& newPath,
                                         const std::string& destination) {
    std::string projectDir;
    getProjectDir(projectDir);
    std::string newRelative;
    fsutil::relativeToFolder(newPath, destination, newRelative);
    addRelocation(recordedOldPath(oldPath, projectDir), newRelative);
}

}  // namespace tvxconv
