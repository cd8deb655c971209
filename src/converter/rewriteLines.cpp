#include "converter/rewriteLines.h"

#include "errors/errors.h"
#include "fsutil/files.h"

namespace tvxconv {

int rewriteLines(const std::string& oldPath, const std::string& newPath, const LineRewriter& rewrite) {
    bool isPresent = false;
    const int status = rewriteLinesIfPresent(oldPath, newPath, rewrite, isPresent);
    return isPresent ? status : reportError(ERR_OPEN_FOR_READING, oldPath);
}

int rewriteLinesIfPresent(const std::string& oldPath, const std::string& newPath, const LineRewriter& rewrite,
                          bool& isPresent) {
    fsutil::LineReader reader;
    isPresent = reader.open(oldPath) == 0;
    if (!isPresent) {
        // A file that exists but cannot be opened now (too many are open, say) is not absent.
        isPresent = fsutil::isPresentFile(oldPath);
        return isPresent ? reportError(ERR_OPEN_FOR_READING, oldPath) : 0;
    }
    fsutil::LineWriter writer;
    if (writer.open(newPath, &reader) != 0) return reportError(ERR_OPEN_FOR_WRITING, newPath);
    std::string_view line;
    while (reader.next(line)) rewrite(line, writer);
    if (reader.failed()) {
        writer.abandon();
        return reportError(ERR_OPEN_FOR_READING, oldPath);
    }
    return writer.close() == 0 ? 0 : reportError(ERR_OPEN_FOR_WRITING, newPath);
}

bool containsEither(const std::string& value, const char* text, const char* otherText) {
    return value.find(text) != std::string::npos || value.find(otherText) != std::string::npos;
}

}  // namespace tvxconv
