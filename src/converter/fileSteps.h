// fileSteps.h
//
// File operations as steps of a conversion: done, or reported with the code that belongs to them.

#pragma once

#include <string>

namespace tvxconv {

// Makes the folder, one level, if it is not there; one that is there must be writable. Returns 0 or
// ERR_CREATE_DIRECTORY.
int ensureDirectoryOrReport(const std::string& path);

// Copies a file (fsutil::copyWholeFile). Returns 0 or ERR_COPY_FILE.
int copyFileOrReport(const std::string& source, const std::string& destination);

// The same for a file that may be absent: `isPresent` tells whether there was one, and 0 is returned
// when not.
int copyFileIfPresentOrReport(const std::string& source, const std::string& destination, bool& isPresent);

}  // namespace tvxconv
