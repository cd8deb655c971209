// fileSteps.h
//
// File operations as steps of a conversion: they succeed or report the matching code.

#pragma once

#include <string>

namespace tvxconv {

// Makes the folder, one level, if it does not exist; an existing one must be writable. Returns 0 or
// ERR_CREATE_DIRECTORY.
int ensureDirectoryOrReport(const std::string& path);

// Copies a file (fsutil::copyWholeFile). Returns 0 or ERR_COPY_FILE.
int copyFileOrReport(const std::string& source, const std::string& destination);

// The same for a file that may be absent: `isPresent` tells whether it exists; if not, 0 is returned.
int copyFileIfPresentOrReport(const std::string& source, const std::string& destination, bool& isPresent);

}  // namespace tvxconv
