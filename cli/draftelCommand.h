// draftelCommand.h
//
// "tvxconv draftel": looks at the project, converts it through the library's exported interface, and
// tells the user what came of it. In place it guards the old files.

#pragma once

#include "commandLine.h"

// Returns the exit status.
int runDraftelCommand(const DraftelOptions& options);
