// tarnetCommand.h
//
// "tvxconv tarnet": converts the cells of a design library through the library's exported interface, and
// tells the user which of them were converted.

#pragma once

#include "commandLine.h"

// Returns the exit status.
int runTarnetCommand(const TarnetOptions& options);
