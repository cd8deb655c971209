#include <dlfcn.h>

#include "modules.h"

void* loadLibrary(const char* path) {
    return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}

void* findFunction(void* library, const char* name) {
    return dlsym(library, name);
}
