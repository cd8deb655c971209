// analysisProfile.h
//
// Checking the advanced-analysis profile of a schematic.

#pragma once

#include <string>

namespace tvxconv {

// Whether a conversion can read the analysis profile at `path`: it can be opened, is well formed and has a
// known type. A conversion skips one that it cannot read, without an error.
bool canReadAnalysisProfile(const std::string& path);

}  // namespace tvxconv
