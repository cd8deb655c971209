// The factory of ITarnetProjectConverter. That interface uses the converter's own types, so its operations
// need no conversion.

#include "interface/ITarnetProjectConverter.h"
#include "tarnet/TarnetProjectConverter.h"

extern "C" ITarnetProjectConverter* createTarnetProjectConverter(const char* libraryPath) {
    try {
        return new tvxconv::TarnetProjectConverter(libraryPath);
    } catch (...) {
        return nullptr;
    }
}
