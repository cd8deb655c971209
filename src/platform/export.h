// export.h
//
// Exporting names from a library and importing them into a program that uses it. A header with exported
// names uses TVXCONV_EXPORT while its own library is built and TVXCONV_IMPORT otherwise. Every name not
// marked so is hidden (the build compiles with hidden visibility).

#pragma once

#if defined(_WIN32)
#define TVXCONV_EXPORT __declspec(dllexport)
#define TVXCONV_IMPORT __declspec(dllimport)
#else
#define TVXCONV_EXPORT __attribute__((visibility("default")))
#define TVXCONV_IMPORT __attribute__((visibility("default")))
#endif
