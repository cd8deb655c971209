// The rest of it is in posix.h.

#pragma once

inline const char* dlerror() {
    return "the loader tells no reason";
}
