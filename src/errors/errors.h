// errors.h
//
// The codes and messages of everything that can go wrong in a conversion, and the last error. The texts are
// published: hosts show them unchanged.
//
// There is one last error in the process, for one conversion at a time. Only reportError and the setters
// write it, and a success does not clear it: ask for it after a status other than 0.

#pragma once

#include <functional>
#include <string>

namespace tvxconv {

enum ErrorCode : int {
    ERR_INVALID_ERROR_CODE = 10101,
    ERR_CREATE_DIRECTORY = 10102,
    ERR_OPEN_DIRECTORY = 10103,
    ERR_FILE_NOT_FOUND = 10104,
    ERR_OPEN_FOR_READING = 10105,
    ERR_OPEN_FOR_WRITING = 10106,
    ERR_DELETE_FILE = 10107,
    ERR_COPY_FILE = 10108,
    ERR_READ_FILE = 10109,
    ERR_WRITE_FILE = 10110,
    ERR_READ_DESIGN_FILE = 10111,
    ERR_DESTINATION_EXISTS = 10112,  // published, raised by nothing
};

// Finds the message of a code: entry `index` of `table`. Its texts have "%s" in place of paths. `group` is
// always 1, the only group. Returns 0, or 1 with `index` 0 for a code without a message.
int lookupErrorMessage(const char* const*& table, int& group, int& index, int code);

// The message of a code, its "%s" unfilled. Returns 0, or 1 with `text` empty for a code without one.
int getErrorMessage(std::string& text, int& group, int code);

// The last error. All return 0; before the first error the code is 0 and the message empty.
int setLastErrorCode(int code);
int getLastErrorCode(int& code);
int setLastErrorMessage(const std::string& text);
int getLastErrorMessage(std::string& text);

// Records a failure: the code, and its message with the path filled in (source and destination for
// ERR_COPY_FILE), cut at 1023 bytes. A code without a message records an empty text. Returns `code`, so
// that the caller can return it.
int reportError(int code, const std::string& path);
int reportError(int code, const std::string& source, const std::string& destination);

// Calls `observer` with each error as it is recorded. An empty observer ends this.
using ErrorObserver = std::function<void(int code, const std::string& message)>;
void observeErrors(ErrorObserver observer);

}  // namespace tvxconv
