// report.h
//
// The report file that a host may have written after a conversion.

#pragma once

#include <string>
#include <vector>

namespace tvxconv {

// Writes the lines under a heading to the file `path`, in the place of one that is there. Returns 0, or
// ERR_OPEN_FOR_WRITING, which is reported, when it cannot be opened. A report that could be opened counts as
// written; where it is not, the old one stays.
int writeReportFile(const std::string& path, const std::vector<std::string>& lines);

}  // namespace tvxconv
