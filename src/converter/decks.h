// decks.h
//
// Text for a circuit simulator: the directives of a netlist or deck that name further files, and the frame
// of rewriting the deck of a profile. Where the named files have gone is for each kind of project to say.

#pragma once

#include <functional>
#include <string>

namespace tvxconv {

// The directive that includes another text.
constexpr const char* kInclude = ".INC";

// A directive and the file that it names, as the simulator reads it.
std::string directiveLine(const char* directive, const std::string& file);

// The new form of a file's reference. The directive stays as it is where `reference` is left empty and where
// the status is not 0.
using ReferenceResolver = std::function<int(const std::string& value, std::string& reference)>;

// Writes the deck at `oldPath` as `newPath`. The include of a netlist becomes one of `netlist`; other
// includes, libraries and stimulus libraries go by `resolve`. A directive that does not name a file of its
// own kind, or none at all, is left out. Statuses as with rewriteLines.
int rewriteDeck(const std::string& oldPath, const std::string& newPath, const std::string& netlist,
                const ReferenceResolver& resolve);

}  // namespace tvxconv
