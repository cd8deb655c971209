// rewriteOptimizerFile.h
//
// The frame of rewriting an optimizer file: lines of the form WORD "VALUE"REST, some of which name files.
// Each kind of project decides which words count and what becomes of the named files.

#pragma once

#include <functional>
#include <span>
#include <string>

namespace tvxconv {

// Makes the new value of a line from its old one. A status other than 0 leaves the line unchanged.
using ValueRewriter = std::function<int(std::string& newValue, const std::string& value)>;

// A word whose value names a file if it contains `mark`, in exactly this letter case.
struct OptimizerLine {
    const char* word;
    const char* mark;
    ValueRewriter newValue;
};

// Words and marks of the files that optimizer files name: profile files and design profiles.
constexpr const char* kSimulationWord = "sim";
constexpr const char* kSimulationMark = ".sim";
constexpr const char* kExternalWord = "ext";
constexpr const char* kExternalMark = ".mdp";

// Writes the optimizer file at `oldPath` as `newPath`. A line with one of the words becomes
//   WORD "NEW"REST   if `newValue` returns 0; REST includes the line end, if there is one; without a closing
//                    quote it is only the line end
//   the old line     if it returns anything else, or the value is empty
//   nothing          if the value lacks the mark, or there is no quote
// Statuses as with rewriteLines.
int rewriteOptimizerFile(const std::string& oldPath, const std::string& newPath,
                         std::span<const OptimizerLine> lines);

}  // namespace tvxconv
