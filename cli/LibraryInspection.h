// LibraryInspection.h
//
// What a Tarnet library shows before and after its conversion: which cells it has, and how far each has
// been converted.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct LibraryInspection {
    std::size_t convertedBefore = 0;     // cells that already have the new view
    std::vector<std::string> toConvert;  // names of the others that have the old view, in listing order
};

// Looks at the cells in the folder. If it cannot be listed, there are none.
LibraryInspection inspectLibrary(const std::string& library);

// Whether the cell is marked as converted.
bool isConverted(const std::string& library, const std::string& cell);

// Removes the mark of a cell if it is empty: the run was interrupted while it wrote the mark. The mark
// would keep the cell from being converted again.
void removeUnfinishedMark(const std::string& library, const std::string& cell);

// Whether the path is in a view of a cell. The file need not exist.
bool isInView(const std::string& library, const std::string& file);
