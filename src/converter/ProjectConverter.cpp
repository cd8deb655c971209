#include "converter/ProjectConverter.h"

#include <algorithm>
#include <cstring>

#include "fsutil/letterCase.h"
#include "fsutil/paths.h"

namespace tvxconv {

using fsutil::toForwardSlashes;
using fsutil::toLowerCase;

ProjectConverter::ProjectConverter(const char* projectPath) {
    if (projectPath != nullptr) setProjectPath(projectPath);
}

int ProjectConverter::convert(int, const std::string&) {
    return 0;
}
int ProjectConverter::getNewStructure(std::vector<std::string>&) {
    return 0;
}
int ProjectConverter::writeReport(const std::vector<std::string>&, const std::string&) {
    return 0;
}
int ProjectConverter::getLastErrorCode(int&) {
    return 0;
}
int ProjectConverter::getLastErrorMessage(std::string&) {
    return 0;
}

int ProjectConverter::readField(const std::string& field, std::string& out) {
    out = field;
    return field.empty() ? 1 : 0;
}

int ProjectConverter::setMode(int mode) {
    if (mode != 0) mode_ = mode;
    return 0;
}

int ProjectConverter::getMode(int& mode) const {
    if (mode_ == 0) return 1;
    mode = mode_;
    return 0;
}

int ProjectConverter::setDesignName(const std::string& name) {
    designName_ = name;
    return 0;
}

int ProjectConverter::getDesignName(std::string& name) const {
    return readField(designName_, name);
}

int ProjectConverter::setProjectPath(const std::string& path) {
    toForwardSlashes(path, projectPath_);
    return 0;
}

int ProjectConverter::getProjectPath(std::string& path) const {
    return readField(projectPath_, path);
}

int ProjectConverter::setProjectDir(const std::string& path) {
    toForwardSlashes(path, projectDir_);
    return 0;
}

int ProjectConverter::getProjectDir(std::string& path) const {
    return readField(projectDir_, path);
}

int ProjectConverter::setNewProjectPath(const std::string& path) {
    toForwardSlashes(path, newProjectPath_);
    return 0;
}

int ProjectConverter::getNewProjectPath(std::string& path) const {
    return readField(newProjectPath_, path);
}

int ProjectConverter::setDestinationDir(const std::string& path) {
    if (!path.empty()) toForwardSlashes(path, destinationDir_);
    return 0;
}

int ProjectConverter::getDestinationDir(std::string& path) const {
    return readField(destinationDir_, path);
}

int ProjectConverter::setSourceDir(const std::string& path) {
    if (!path.empty()) toForwardSlashes(path, sourceDir_);
    return 0;
}

bool ProjectConverter::InLowerCase::operator()(std::string_view a, std::string_view b) const {
    // Most keys of a project begin alike. Bytes that are equal need no folding.
    constexpr std::size_t kWord = 8;
    const std::size_t size = std::min(a.size(), b.size());
    std::size_t same = 0;
    while (same + kWord <= size && std::memcmp(&a[same], &b[same], kWord) == 0) same += kWord;
    a.remove_prefix(same);
    b.remove_prefix(same);
    const auto folded = [](char byte) { return static_cast<unsigned char>(fsutil::lowerCase(byte)); };
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [&](char x, char y) { return folded(x) < folded(y); });
}

bool ProjectConverter::insertRelocation(const std::string& oldPath, const std::string& newPath) {
    const auto place = relocations_.lower_bound(oldPath);
    const bool isThere = place != relocations_.end() && !InLowerCase()(oldPath, place->first);
    if (!isThere) relocations_.emplace_hint(place, kept(oldPath), kept(toLowerCase(newPath)));
    return !isThere;
}

int ProjectConverter::addRelocation(const std::string& oldPath, const std::string& newPath) {
    insertRelocation(oldPath, newPath);
    return 0;
}

int ProjectConverter::addMove(const std::string& oldFile, const std::string& newPath) {
    const std::string key = relocationKey(oldFile, projectDir_);
    const bool isWhereKeyLeads = key == oldFile || oldFile.starts_with(projectDir_ + "/");
    if (insertRelocation(key, newPath) && !isWhereKeyLeads) otherFiles_.emplace(key, oldFile);
    return 0;
}

std::string_view ProjectConverter::kept(const std::string& text) {
    char* const place = static_cast<char*>(relocationMemory_.allocate(text.size(), 1));
    text.copy(place, text.size());
    return {place, text.size()};
}

int ProjectConverter::findRelocation(const std::string& oldPath, std::string& newPath) const {
    const auto found = relocations_.find(oldPath);
    const bool isThere = found != relocations_.end();
    newPath = isThere ? found->second : std::string_view();
    return isThere ? 0 : 1;
}

std::string ProjectConverter::relocationKey(const std::string& oldPath, const std::string& projectDir) {
    std::string relative;
    if (fsutil::isBelowFolder(oldPath, projectDir) &&
        fsutil::relativeToFolder(oldPath, projectDir, relative) == 0) {
        return relative;
    }
    return oldPath;
}

int ProjectConverter::handOut(Relocations::const_iterator move, std::string& oldPath,
                              std::string& newPath) const {
    if (move == relocations_.end()) return 1;
    oldPath = toLowerCase(std::string(move->first));
    newPath = move->second;
    return 0;
}

int ProjectConverter::firstRelocation(std::string& oldPath, std::string& newPath) {
    cursor_ = relocations_.begin();
    return handOut(cursor_, oldPath, newPath);
}

int ProjectConverter::nextRelocation(std::string& oldPath, std::string& newPath) {
    if (cursor_ != relocations_.end()) ++cursor_;
    return handOut(cursor_, oldPath, newPath);
}

int ProjectConverter::forEachOldFile(
    const std::function<int(const std::string& file, bool isOfProject)>& visit) const {
    for (const auto& [oldPath, newPath] : relocations_) {
        const fsutil::Reference old{std::string(oldPath)};
        std::string file;
        if (!old.resolve(projectDir_, file)) continue;
        const auto other = otherFiles_.find(oldPath);
        if (other != otherFiles_.end()) file = other->second;
        if (const int status = visit(file, old.isRelative()); status != 0) return status;
    }
    return 0;
}

}  // namespace tvxconv
