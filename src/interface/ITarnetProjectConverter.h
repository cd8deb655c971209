// ITarnetProjectConverter.h
//
// The interface of a Tarnet conversion for hosts; ownership, threads, slots and statuses as with
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

    // Converts the cells of the library that the object was made for; both arguments are ignored. A cell
    // that has been converted is left alone. Returns 0; 1 if the path of the library, or of its parent
    // folder, has no separator; or the code of a failure that ends the run: the library cannot be opened,
    // or the new view of a cell cannot be made or marked. Cells before that one stay converted. A file that
    // cannot be converted ends the work on its cell only: it is recorded as the last error and the status
    // is 0.
    virtual int convert(int mode, const std::string& path) = 0;

    // The last component of the library's parent folder. Returns 1, with `name` empty, before a conversion.
    virtual int getLibraryParentName(std::string& name) = 0;

    // Appends the new structure to `lines`: every cell that has both views, also those converted earlier.
    // Returns 1, with nothing appended, before a conversion.
    virtual int getNewStructure(std::vector<std::string>& lines) = 0;

    // Writes `lines` under a heading to the file `reportName` in the library folder, which is known after a
    // conversion. Returns 0, or the code of the failure if the file cannot be opened.
    virtual int writeReport(const std::vector<std::string>& lines, const std::string& reportName) = 0;

    // As in IDraftelProjectConverter, but `message` is always set.
    virtual int getLastErrorCode(int& code) = 0;
    virtual int getLastErrorMessage(std::string& message) = 0;
};

// Makes a converter for the design library in the folder `libraryPath`. The caller owns and deletes it.
// Null if there is no memory for it.
extern "C" TVXCONV_API ITarnetProjectConverter* createTarnetProjectConverter(const char* libraryPath);
