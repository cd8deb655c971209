// modules.h
//
// How a host of its own loads a library: the system's two calls, in one source file for each system.

#pragma once

// Null when the library cannot be loaded.
void* loadLibrary(const char* path);

// Null when the library exports no such name.
void* findFunction(void* library, const char* name);
