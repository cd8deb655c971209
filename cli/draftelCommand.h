// draftelCommand.h
//
// "tvxconv draftel": checks the project, converts it through the library's exported interface, and tells
// the user the result. In place it guards the old files.

#pragma once

#include "commandLine.h"

// Returns the exit status.
int runDraftelCommand(const DraftelOptions& options);
