#include "draftel/DraftelProjectConverter.h"

#include "draftel/layout.h"
#include "errors/errors.h"
#include "fsutil/paths.h"

namespace tvxconv {

using namespace draftel;

using fsutil::toForwardSlashes;

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

std::string DraftelProjectConverter::oldProfileFile(const std::string& fileBase) const {
    return projectDir() + "/" + fileBase + "." + kProfile;
}

std::string DraftelProjectConverter::simulationRoot() const {
    return destinationDir() + "/" + simulationRootName(designName());
}

void DraftelProjectConverter::recordMove(const std::string& oldPath, const std::string& newPath,
                                         const std::string& destination) {
    std::string newRelative;
    fsutil::relativeToFolder(newPath, destination, newRelative);
    addMove(oldPath, newRelative);
}

}  // namespace tvxconv
