// ITarnetProjectConverter.h
//
// What a host sees of a Tarnet conversion; ownership, threads, slots and statuses as with
// IDraftelProjectConverter. The order of the slots differs from it on purpose.

#pragma once

#include <string>
#include <vector>

#include "interface/libraryApi.h"

class TVXCONV_API ITarnetProjectConverter {
public:
    ITarnetProjectConverter();
    ITarnetProjectConverter(const ITarnetProjectConverter& other);
    ITarnetProjectConverter& operator=(const ITarnetProjectConverter& other);
    virtual ~ITarnetProjectConverter();

    // Converts the library that the object was made for; both arguments are ignored. This version has
    // no Tarnet conversion: it touches nothing and returns 1.
    virtual int convert(int mode, const std::string& path) = 0;

    // The last component of the library's parent folder. Returns 1, with `name` empty, before a
    // conversion.
    virtual int getLibraryParentName(std::string& name) = 0;

    // Appends the new structure to `lines`. Returns 1, with nothing appended, before a conversion.
    virtual int getNewStructure(std::vector<std::string>& lines) = 0;

    // Writes `lines` under a heading to the file `reportName` in the library folder. Returns 1 before a
    // conversion.
    virtual int writeReport(const std::vector<std::string>& lines, const std::string& reportName) = 0;

    // As in IDraftelProjectConverter, but `message` is always set.
    virtual int getLastErrorCode(int& code) = 0;
    virtual int getLastErrorMessage(std::string& message) = 0;
};

// Makes a converter for the design library in the folder `libraryPath`. The caller owns and deletes it.
// Null when there is no memory for it.
extern "C" TVXCONV_API ITarnetProjectConverter* createTarnetProjectConverter(const char* libraryPath);
