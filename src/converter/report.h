// report.h
//
// The report file that a host may request after a conversion.

#pragma once

#include <string>
#include <vector>

namespace tvxconv {

// Writes the lines under a heading to the file `path`, replacing an existing one. Returns 0, or
// ERR_OPEN_FOR_WRITING, which is reported, if it cannot be opened. A report that could be opened counts as
// written; if writing it fails, the old one stays.
int writeReportFile(const std::string& path, const std::vector<std::string>& lines);

}  // namespace tvxconv
