// rewriteLines.h
//
// Copying a text file line by line with some lines rewritten: the frame that all rewriters share. Each
// rewriter decides what becomes of a line.

#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "fsutil/lines.h"

namespace tvxconv {

// Writes what replaces one line: the line itself, another text, or nothing.
using LineRewriter = std::function<void(std::string_view line, fsutil::LineWriter& writer)>;

// Reads `oldPath` and writes `newPath`, passing each line to `rewrite`. Returns 0; ERR_OPEN_FOR_READING
// with the old path if that cannot be opened or read to its end; ERR_OPEN_FOR_WRITING with the new path if
// that cannot be opened or written to its end, or is the old file itself. Both are reported. On failure
// there is no new file (an earlier file at `newPath` is gone if it was opened).
int rewriteLines(const std::string& oldPath, const std::string& newPath, const LineRewriter& rewrite);

// The same for an old file that may be absent: `isPresent` tells whether it is a plain file that may be
// read; if not, nothing is done and 0 returned.
int rewriteLinesIfPresent(const std::string& oldPath, const std::string& newPath, const LineRewriter& rewrite,
                          bool& isPresent);

// Whether the value of a line contains one of two texts, in exactly this letter case: the two spellings of
// an extension that tell which file the value names.
bool containsEither(const std::string& value, const char* text, const char* otherText);

}  // namespace tvxconv
