#include <windows.h>

#include "modules.h"

void* loadLibrary(const char* path) {
    // So that the libraries which this one needs are found beside it, and not only beside the program. That
    // takes an absolute path with the system's own separators.
    char absolute[MAX_PATH];
    const DWORD length = GetFullPathNameA(path, MAX_PATH, absolute, nullptr);
    if (length == 0 || length >= MAX_PATH) return nullptr;
    return reinterpret_cast<void*>(LoadLibraryExA(absolute, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
}

void* findFunction(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
