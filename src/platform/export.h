// export.h
//
// How a name leaves the library it is compiled into, and how it enters a program that uses that library.
// A header with exported names says TVXCONV_EXPORT while its own library is built and TVXCONV_IMPORT for
// everyone else. Everything not so marked stays hidden (the build compiles with hidden visibility).

#pragma once

#if defined(_WIN32)
#define TVXCONV_EXPORT __declspec(dllexport)
#define TVXCONV_IMPORT __declspec(dllimport)
#else
#define TVXCONV_EXPORT __attribute__((visibility("default")))
#define TVXCONV_IMPORT __attribute__((visibility("default")))
#endif
