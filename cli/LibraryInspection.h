// LibraryInspection.h
//
// What can be seen of a Tarnet library from outside, before and after its conversion: which cells there are,
// and how far each has come.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct LibraryInspection {
    std::size_t convertedBefore = 0;     // cells that have the new view already
    std::vector<std::string> toConvert;  // names of the others that have the old view, in their order
};

// Looks at the folder's cells. One that cannot be listed has none.
LibraryInspection inspectLibrary(const std::string& library);

// Whether the cell is marked as converted.
bool isConverted(const std::string& library, const std::string& cell);

// Takes away the mark of a cell that was being marked when the run was interrupted: an empty one, which would
// keep the cell from being converted again.
void removeUnfinishedMark(const std::string& library, const std::string& cell);

// Whether the file lies in a view of a cell, be it there or not.
bool isInView(const std::string& library, const std::string& file);
