// outputName.h
//
// The names of a profile's outputs in the new layout, for Draftel projects and Tarnet cells alike.

#pragma once

#include <string>

namespace tvxconv {

// The extension of a profile's deck in the old layout.
constexpr const char* kOldDeckExtension = "sim.cir";

// The extension of an output in the profile's folder. If the old one begins with the profile file's own
// extension, that is dropped ("sim.cir" gives "cir"); all others stay unchanged, in their own letter case.
std::string newOutputExtension(const std::string& extension);

// The name of an output in the profile's folder, from its old extension.
std::string newOutputName(const std::string& profile, const std::string& extension);

}  // namespace tvxconv
