// rewriteDeck.h
//
// Text for a circuit simulator, with directives that name other files: the deck of a profile, and the
// netlist that decks include. Each kind of project decides what becomes of those references.

#pragma once

#include <functional>
#include <string>

namespace tvxconv {

// Makes the new form of a file reference. The directive stays unchanged if `reference` is left empty or the
// status is not 0.
using ReferenceResolver = std::function<int(const std::string& value, std::string& reference)>;

// Writes the deck at `oldPath` as `newPath`. The include of a netlist becomes one of `netlist`; other
// includes, libraries and stimulus libraries are resolved by `resolve`. A directive that names no file, or
// one of another kind, is left out. Statuses as with rewriteLines.
int rewriteDeck(const std::string& oldPath, const std::string& newPath, const std::string& netlist,
                const ReferenceResolver& resolve);

// What happens to an include that names no file.
enum class EmptyInclude { isKept, isLeftOut };

// Writes the netlist at `oldPath` as `newPath`. Of its includes only that of the parameter file is kept:
// the decks name the others. The decks include the netlist from one folder further down, and from there the
// parameter file is one level up: it becomes "../" + `owner` + ".par". Statuses as with rewriteLines.
int rewriteNetlist(const std::string& oldPath, const std::string& newPath, const std::string& owner,
                   EmptyInclude emptyInclude);

}  // namespace tvxconv
