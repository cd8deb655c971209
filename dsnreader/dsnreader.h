// dsnreader.h
//
// The design reader: a module that is loaded while the program runs (DraDsnReader.so, DraDsnReader.dll)
// and tells which root schematics a design (".dsn") has. It has one plain exported function, so another
// reader with that function can stand in its place. Strings and list are handed over as they are: reader
// and program must be built with the same standard library.
//
// The form of our designs, a JSON object in UTF-8; other keys may stand beside the one shown:
//
//   { "rootSchematics": ["SCHEMATIC1", "OUTPUT"] }

#pragma once

#include <string>
#include <vector>

#include "platform/export.h"

// Reads the root schematics of a design.
//
//   design          path of the design file, in the code page of the host
//   unused          not looked at
//   rootSchematics  cleared; then the names, in file order, in the code page of the host
//
// Returns 0, or non-zero with an empty list: the file cannot be read, is no JSON object, has no
// "rootSchematics" or something else than a list of texts under it, a name has no form in the host's code
// page, has a key twice in one object, is nested more than 512 deep, or memory ran out. Does not throw.
extern "C" TVXCONV_EXPORT int getDsnInfo(const std::string& design, const std::string& unused,
                                         std::vector<std::string>& rootSchematics);
