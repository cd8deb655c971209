// analysisProfile.h
//
// Asking about the advanced-analysis profile of a schematic.

#pragma once

#include <string>

namespace tvxconv {

// Whether a conversion can read the analysis profile at `path`: it can be opened, is well formed and tells a
// known type. One that it cannot read it passes over without an error.
bool canReadAnalysisProfile(const std::string& path);

}  // namespace tvxconv
