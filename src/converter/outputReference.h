// outputReference.h
//
// The data and output files that a profile file names, in both kinds of project.

#pragma once

#include <string>

#include "converter/ProjectConverter.h"

namespace tvxconv {

// The new form of a data or output file that a profile file names. `fileBase` is the profile file's name
// before its first ".", `profile` the profile's name, which its moved outputs get. A file in the table of
// moves of `converter` is named without a folder, any other by its absolute path. Returns 1, with
// `reference` empty, if the value cannot be resolved.
int relocateOutputValue(const ProjectConverter& converter, std::string& reference, const std::string& value,
                        const std::string& projectDir, const std::string& fileBase,
                        const std::string& profile);

}  // namespace tvxconv
