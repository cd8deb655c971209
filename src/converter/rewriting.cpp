#include "converter/rewriting.h"

#include "converter/errors.h"

namespace tvxconv {

int rewriteLines(const std::string& oldPath, const std::string& newPath, const LineRewriter& rewrite) {
    fsutil::LineReader reader;
    if (reader.open(oldPath) != 0) return reportError(ERR_OPEN_FOR_READING, oldPath);
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
