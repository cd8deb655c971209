// rewriteDeck.h
//
// Text for a circuit simulator, with directives that name further files: the deck of a profile, and the
// netlist that decks include. Where the named files have gone is for each kind of project to say.

#pragma once

#include <functional>
#include <string>

namespace tvxconv {

// The new form of a file's reference. The directive stays as it is where `reference` is left empty and where
// the status is not 0.
using ReferenceResolver = std::function<int(const std::string& value, std::string& reference)>;

// Writes the deck at `oldPath` as `newPath`. The include of a netlist becomes one of `netlist`; other
// includes, libraries and stimulus libraries go by `resolve`. A directive that does not name a file of its
// own kind, or none at all, is left out. Statuses as with rewriteLines.
int rewriteDeck(const std::string& oldPath, const std::string& newPath, const std::string& netlist,
                const ReferenceResolver& resolve);

// What becomes of an include that names no file.
enum class EmptyInclude { isKept, isLeftOut };

// Writes the netlist at `oldPath` as `newPath`. Of its includes only that of the parameter file survives: the
// decks name the others. They include the netlist from one folder further down, from where the parameter
// file is one level up: it becomes "../" + `owner` + ".par". Statuses as with rewriteLines.
int rewriteNetlist(const std::string& oldPath, const std::string& newPath, const std::string& owner,
                   EmptyInclude emptyInclude);

}  // namespace tvxconv
