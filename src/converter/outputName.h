// outputName.h
//
// What the outputs of a profile are called in the new layout, of a Draftel project and of a Tarnet cell
// alike.

#pragma once

#include <string>

namespace tvxconv {

// The extension of a profile's deck before it has moved.
constexpr const char* kOldDeckExtension = "sim.cir";

// The extension under which an output of a profile goes into the profile's folder. Those that carried the
// profile file's own extension lose it ("sim.cir" gives "cir"); all others stay as they are, in their own
// letter case.
std::string newOutputExtension(const std::string& extension);

// The name of an output in the profile's folder, from its old extension.
std::string newOutputName(const std::string& profile, const std::string& extension);

}  // namespace tvxconv
