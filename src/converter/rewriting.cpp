#include "converter/rewriting.h"

#include <cstdio>

#include "converter/errors.h"

namespace tvxconv {
namespace {

// What stands behind the closing quote of a line's value, without the line end.
std::string_view restOf(std::string_view line) {
    const std::size_t close = line.find('"', line.find('"') + 1);
    if (close == std::string_view::npos) return {};
    std::string_view rest = line.substr(close + 1);
    rest.remove_suffix(fsutil::lineEndOf(rest).size());
    return rest;
}

}  // namespace

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

void rewriteValue(std::string_view line, const char* key, const char* mark, const ValueRewriter& newValue,
                  fsutil::LineWriter& writer) {
    std::string value;
    const int scanned = fsutil::scanQuotedValue(line, value);
    if (scanned == EOF) return;
    if (scanned == 1 && value.find(mark) == std::string::npos) return;
    std::string replacement;
    if (scanned == 0 || newValue(replacement, value) != 0) {
        writer.write(line);
        return;
    }
    writer.writeInPlaceOf(
        line, std::string(key).append(" \"").append(replacement).append("\"").append(restOf(line)));
}

bool containsEither(const std::string& value, const char* text, const char* otherText) {
    return value.find(text) != std::string::npos || value.find(otherText) != std::string::npos;
}

}  // namespace tvxconv
