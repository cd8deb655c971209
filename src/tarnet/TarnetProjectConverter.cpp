#include "tarnet/TarnetProjectConverter.h"

#include "converter/guarded.h"
#include "errors/errors.h"
#include "fsutil/files.h"

namespace tvxconv {

TarnetProjectConverter::TarnetProjectConverter(const char* libraryPath) : ProjectConverter(libraryPath) {}

int TarnetProjectConverter::convert(int, const std::string&) {
    return guarded([&] {
        const fsutil::RememberedFolders folders;
        return convertLibrary();
    });
}

int TarnetProjectConverter::getLibraryParentName(std::string& name) {
    return guarded([&] { return readField(libraryParentName_, name); });
}

int TarnetProjectConverter::getLastErrorCode(int& code) {
    return tvxconv::getLastErrorCode(code);
}

int TarnetProjectConverter::getLastErrorMessage(std::string& message) {
    return guarded([&] { return tvxconv::getLastErrorMessage(message); });
}

int TarnetProjectConverter::setCellName(const std::string& name) {
    cellName_ = name;
    return 0;
}

int TarnetProjectConverter::getCellName(std::string& name) const {
    return readField(cellName_, name);
}

int TarnetProjectConverter::setLibraryDirectory(const std::string& path) {
    libraryDirectory_ = path;
    return 0;
}

int TarnetProjectConverter::getLibraryDirectory(std::string& path) const {
    return readField(libraryDirectory_, path);
}

int TarnetProjectConverter::setLibraryParentName(const std::string& name) {
    libraryParentName_ = name;
    return 0;
}

int TarnetProjectConverter::getLibraryParentName(std::string& name) const {
    return readField(libraryParentName_, name);
}

}  // namespace tvxconv
