// rewriting.h
//
// Copying a text file line by line with some lines rewritten: the frame that all rewriters share. What
// becomes of a line is each rewriter's own.

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

// Makes the new value of a line from its old one. A status other than 0 leaves the line as it is.
using ValueRewriter = std::function<int(std::string& newValue, const std::string& value)>;

// Writes what becomes of a line of the form KEY "VALUE"REST, in which a value that contains `mark` (in just
// this letter case) names a file:
//   KEY "NEW"REST    where `newValue` returns 0; without a closing quote there is no REST
//   the old line     where it returns anything else, and where the value is empty
//   nothing          where the value lacks `mark`, or there is none
void rewriteValue(std::string_view line, const char* key, const char* mark, const ValueRewriter& newValue,
                  fsutil::LineWriter& writer);

// Whether the value of a line has one of two texts in it, in just this letter case: the two spellings of an
// extension that tell which file the value names.
bool containsEither(const std::string& value, const char* text, const char* otherText);

}  // namespace tvxconv
