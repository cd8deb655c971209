// rewriteLines.h
//
// Copying a text file line by line with some lines rewritten: the frame that all rewriters share. What
// becomes of a line is each rewriter's decision.

#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "fsutil/lines.h"

namespace tvxconv {

// Writes what becomes of one line: the line itself, another text in its place, or nothing.
using LineRewriter = std::function<void(std::string_view line, fsutil::LineWriter& writer)>;

// Reads `oldPath` and writes `newPath`, handing each line to `rewrite`. Returns 0; ERR_OPEN_FOR_READING
// with the old path when that cannot be opened or read to its end; ERR_OPEN_FOR_WRITING with the new
// path when that cannot be opened or written to its end, or is the old file itself. Both are reported.
// On failure there is no new file (one that was there is gone if it had been opened).
int rewriteLines(const std::string& oldPath, const std::string& newPath, const LineRewriter& rewrite);

// The same for an old file that may be absent: `isPresent` tells whether it is a plain file that may be
// read; when not, nothing is done and 0 returned.
int rewriteLinesIfPresent(const std::string& oldPath, const std::string& newPath, const LineRewriter& rewrite,
                          bool& isPresent);

// Whether the value of a line has one of two texts in it, in just this letter case: the two spellings of an
// extension that tell which file the value names.
bool containsEither(const std::string& value, const char* text, const char* otherText);

}  // namespace tvxconv
