// dsnreader.h
//
// The design reader: a module loaded at run time (DraDsnReader.so, DraDsnReader.dll) that reads the root
// schematics of a design (".dsn"). It has one exported C function, so another reader with that function can
// replace it. Strings and list are passed as C++ objects: reader and program must be built with the same
// standard library.
//
// The form of our designs, a JSON object in UTF-8; other keys may occur beside the one shown:
//
//   { "rootSchematics": ["SCHEMATIC1", "OUTPUT"] }

#pragma once

#include <string>
#include <vector>

#include "platform/export.h"

// Reads the root schematics of a design.
//
//   design          path of the design file, in the code page of the host
//   unused          ignored
//   rootSchematics  cleared; then the names, in file order, in the code page of the host
//
// Returns 0, or non-zero with an empty list: the file cannot be read or is no JSON object, "rootSchematics"
// is missing or no list of texts, a name cannot be converted to the host's code page, a key occurs twice in
// one object, nesting is more than 512 deep, or memory ran out. Does not throw.
extern "C" TVXCONV_EXPORT int getDsnInfo(const std::string& design, const std::string& unused,
                                         std::vector<std::string>& rootSchematics);
