#include "errors/errors.h"

#include <iterator>
#include <utility>

namespace tvxconv {
namespace {

constexpr int kFirstCode = ERR_INVALID_ERROR_CODE;
constexpr std::size_t kMostMessageBytes = 1023;

constexpr const char* kMessages[] = {
    "Invalid error code.",
    "Failed to create directory \"%s\". Check write permissions on the parent directory.",
    "Failed to open directory \"%s\". Check its existence on the disk.",
    "File \"%s\" does not exist.",
    "Failed to open file \"%s\" for reading. Check its access permissions and existence on the disk.",
    "Failed to open file \"%s\" for writing. Check disk space and write permissions on the parent directory.",
    "Failed to delete file \"%s\".",
    "Failed to copy file \"%s\" to file \"%s\". Check disk space and access permissions.",
    "Failed to read file \"%s\". Check the file syntax.",
    "Failed to write to file \"%s\". Check disk space and write permissions on the file.",
    "Failed to read the design file \"%s\".",
    "Destination project file \"%s\" already exists.",
};
static_assert(std::size(kMessages) == ERR_DESTINATION_EXISTS - kFirstCode + 1);

struct LastError {
    int code = 0;
    std::string message;
};

LastError& lastError() {
    static LastError error;
    return error;
}

ErrorObserver& errorObserver() {
    static ErrorObserver observer;
    return observer;
}

}  // namespace

int lookupErrorMessage(const char* const*& table, int& group, int& index, int code) {
    table = kMessages;
    group = 1;
    index = 0;
    if (code < kFirstCode || code > ERR_DESTINATION_EXISTS) return 1;
    index = code - kFirstCode;
    return 0;
}

int getErrorMessage(std::string& text, int& group, int code) {
    text.clear();
    const char* const* table = nullptr;
    int index = 0;
    const int status = lookupErrorMessage(table, group, index, code);
    if (status == 0) text = table[index];
    return status;
}

int setLastErrorCode(int code) {
    lastError().code = code;
    return 0;
}

int getLastErrorCode(int& code) {
    code = lastError().code;
    return 0;
}

int setLastErrorMessage(const std::string& text) {
    lastError().message = text;
    return 0;
}

int getLastErrorMessage(std::string& text) {
    text = lastError().message;
    return 0;
}

int reportError(int code, const std::string& path) {
    return reportError(code, path, std::string());
}

int reportError(int code, const std::string& source, const std::string& destination) {
    std::string message;
    int group = 0;
    getErrorMessage(message, group, code);
    // From the end, so that a "%s" in a path is left alone. A path ends at its first NUL.
    const std::size_t last = message.rfind("%s");
    if (last != std::string::npos) {
        const std::size_t first = message.find("%s");
        if (first != last) message.replace(last, 2, destination.c_str());
        message.replace(first, 2, source.c_str());
    }
    if (message.size() > kMostMessageBytes) message.resize(kMostMessageBytes);
    setLastErrorCode(code);
    setLastErrorMessage(message);
    if (errorObserver()) errorObserver()(code, message);
    return code;
}

void observeErrors(ErrorObserver observer) {
    errorObserver() = std::move(observer);
}

}  // namespace tvxconv
