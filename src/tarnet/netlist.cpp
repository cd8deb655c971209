// The netlist of a cell, which the decks of its profiles include.

#include "converter/rewriteDeck.h"
#include "tarnet/TarnetProjectConverter.h"

namespace tvxconv {

int TarnetProjectConverter::rewriteNetlist(const std::string& sourcePath, const std::string& destinationPath,
                                           const std::string& cellName) {
    return tvxconv::rewriteNetlist(sourcePath, destinationPath, cellName, EmptyInclude::isLeftOut);
}

}  // namespace tvxconv
