// rewriteOptimizerFile.h
//
// The frame of rewriting an optimizer file: lines of the form WORD "VALUE"REST, of which some name files.
// Which words are looked at, and where the named files have gone, is for each kind of project to say.

#pragma once

#include <functional>
#include <span>
#include <string>

namespace tvxconv {

// Makes the new value of a line from its old one. A status other than 0 leaves the line as it is.
using ValueRewriter = std::function<int(std::string& newValue, const std::string& value)>;

// A word whose value names a file if it contains `mark`, in just this letter case.
struct OptimizerLine {
    const char* word;
    const char* mark;
    ValueRewriter newValue;
};

// Words and marks for the files that optimizer files name: profile files, and design profiles.
constexpr const char* kSimulationWord = "sim";
constexpr const char* kSimulationMark = ".sim";
constexpr const char* kExternalWord = "ext";
constexpr const char* kExternalMark = ".mdp";

// Writes the optimizer file at `oldPath` as `newPath`. Of a line with one of the words becomes
//   WORD "NEW"REST   where `newValue` returns 0; REST has the line end, if there is one; without a closing
//                    quote the line end is all of it
//   the old line     where it returns anything else, and where the value is empty
//   nothing          where the value lacks the mark, or there is no quote
// Statuses as with rewriteLines.
int rewriteOptimizerFile(const std::string& oldPath, const std::string& newPath,
                         std::span<const OptimizerLine> lines);

}  // namespace tvxconv
