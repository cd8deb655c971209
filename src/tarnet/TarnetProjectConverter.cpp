#include "tarnet/TarnetProjectConverter.h"

#include "converter/errors.h"
#include "interface/guard.h"

namespace tvxconv {

TarnetProjectConverter::TarnetProjectConverter(const char* libraryPath) : ProjectConverter(libraryPath) {}

int TarnetProjectConverter::convert(int, const std::string&) {
    return 1;
}

int TarnetProjectConverter::getLibraryParentName(std::string& name) {
    return guarded([&] { return readField(libraryParentName_, name); });
}

int TarnetProjectConverter::getNewStructure(std::vector<std::string>&) {
    return 1;
}

int TarnetProjectConverter::writeReport(const std::vector<std::string>&, const std::string&) {
    return 1;
}

int TarnetProjectConverter::getLastErrorCode(int& code) {
    return tvxconv::getLastErrorCode(code);
}

int TarnetProjectConverter::getLastErrorMessage(std::string& message) {
    return guarded([&] { return tvxconv::getLastErrorMessage(message); });
}

}  // namespace tvxconv
