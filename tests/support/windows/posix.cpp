#include "support/windows/posix.h"

#include <gtest/gtest.h>
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <cstring>
#include <random>
#include <string>

namespace {

// What tests open by themselves they want byte for byte.
[[maybe_unused]] const int openedInBinary = (_fmode = _O_BINARY);

}  // namespace

namespace tests {

void skipTest(const char* reason) {
    [&] { GTEST_SKIP() << reason; }();
    // The test framework takes this for a test that has said all it had to say.
    throw testing::AssertionException(
        testing::TestPartResult(testing::TestPartResult::kSkip, __FILE__, __LINE__, reason));
}

int changePermissions(const char* path, unsigned permissions) {
    const DWORD attributes = GetFileAttributesA(path);
    const bool isFolder =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if ((permissions & 0400U) == 0) skipTest("needs a file or folder that may not be read");
    if (isFolder && (permissions & 0200U) == 0) skipTest("needs a folder that may not be written");
    return _chmod(path, (permissions & 0200U) != 0 ? _S_IREAD | _S_IWRITE : _S_IREAD);
}

int openPipe(int* ends) {
    return _pipe(ends, 65536, _O_BINARY);
}

}  // namespace tests

char* mkdtemp(char* pattern) {
    static std::mt19937 random{std::random_device()() + GetCurrentProcessId()};
    char* const varying = pattern + std::strlen(pattern) - 6;
    for (int attempt = 0; attempt < 100; ++attempt) {
        for (int i = 0; i < 6; ++i) varying[i] = static_cast<char>('a' + random() % 26);
        if (_mkdir(pattern) == 0) return pattern;
    }
    return nullptr;
}

int setenv(const char* name, const char* value, int) {
    return _putenv_s(name, value);
}

int unsetenv(const char* name) {
    return _putenv_s(name, "");
}

void* dlopen(const char* path, int) {
    return reinterpret_cast<void*>(LoadLibraryA(path));
}

void* dlsym(void* module, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

int dlclose(void* module) {
    return FreeLibrary(static_cast<HMODULE>(module)) ? 0 : -1;
}
