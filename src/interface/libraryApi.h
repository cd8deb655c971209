// libraryApi.h
//
// Marks what the library exports: exported while it is built, imported by its users, and neither in the
// static library that programs of this project link.

#pragma once

#include "platform/export.h"

#if defined(TVXCONV_BUILDING_LIBRARY)
#define TVXCONV_API TVXCONV_EXPORT
#elif defined(TVXCONV_STATIC)
#define TVXCONV_API
#else
#define TVXCONV_API TVXCONV_IMPORT
#endif
