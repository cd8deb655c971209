#include <windows.h>

#include "modules.h"

void* loadLibrary(const char* path) {
    return reinterpret_cast<void*>(LoadLibraryA(path));
}

void* findFunction(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
