// IDraftelProjectConverter.h
//
// The interface of a Draftel conversion for hosts. A host makes one object for each conversion, uses it
// from one thread and deletes it, possibly through this class. The order of the virtual functions is fixed:
// hosts call by slot.
//
// A status is 0 for success; 1 if there is nothing to return, a path has the wrong form or memory ran out;
// else a code of the published list (10102 to 10111), whose message getLastErrorMessage then returns.
// Nothing is thrown.

#pragma once

#include "interface/hostStrings.h"
#include "interface/libraryApi.h"

class TVXCONV_API IDraftelProjectConverter {
public:
    IDraftelProjectConverter();
    IDraftelProjectConverter(const IDraftelProjectConverter& other);
    IDraftelProjectConverter& operator=(const IDraftelProjectConverter& other);
    virtual ~IDraftelProjectConverter();

    // Converts the project. Mode 2: into the folder `path`, which is made if its parent exists; the old
    // files stay. Mode 1: in place (`path` is not used); the old copies of moved files are deleted at the
    // end. Any other mode does nothing and returns 0. The path is absolute. A conversion that fails leaves
    // what it has made so far; in mode 1 old files are gone only if deleting them is what failed.
    virtual int convert(int mode, const CString& path) = 0;

    // Appends the new structure to `lines`: the destination, then each folder's path with its files
    // indented below it. Returns 1, with nothing appended, before a conversion.
    virtual int getNewStructure(CStringArray& lines) = 0;

    // Writes two sentences and `lines` (empty ones left out) to the file `reportPath`, which is taken
    // relative to the destination folder. Returns ERR_OPEN_FOR_WRITING if it cannot be opened.
    virtual int writeReport(const CStringArray& lines, const CString& reportPath) = 0;

    // The path of the converted project file. Before a successful conversion returns 1 and leaves `path`
    // unchanged.
    virtual int getNewProjectPath(CString& path) = 0;

    // The last error of the process (0 and no text before the first). getLastErrorMessage leaves `message`
    // unchanged if there is no text. Both return 0.
    virtual int getLastErrorCode(int& code) = 0;
    virtual int getLastErrorMessage(CString& message) = 0;
};

// Makes a converter for the project file at `projectPath`. The caller owns and deletes it. Null if there is
// no memory for it.
extern "C" TVXCONV_API IDraftelProjectConverter* createDraftelProjectConverter(const CString* projectPath);
