// Running a program, for Windows.

#include <gtest/gtest.h>

#include "support/TestFolder.h"
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <iostream>

namespace tests {
namespace {

// As the runtime of the program takes a command line apart: an argument in quotes, backslashes doubled where
// a quote follows them.
std::string quoted(const std::string& argument) {
    std::string text = "\"";
    std::size_t backslashes = 0;
    for (const char byte : argument) {
        if (byte == '"') text.append(backslashes + 1, '\\');
        backslashes = byte == '\\' ? backslashes + 1 : 0;
        text += byte;
    }
    return text.append(backslashes, '\\') + '"';
}

HANDLE openInherited(const char* path, DWORD access, DWORD disposition) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return CreateFileA(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

// What a program prints passes through the runtime's text mode.
std::string printed(const std::string& path) {
    return replaced(readFile(path), "\r\n", "\n");
}

}  // namespace

ProgramResult runProgram(const std::vector<std::string>& command, const std::string& folder,
                         const std::vector<std::string>& environment) {
    std::vector<std::string> arguments = command;
    // The limit of a test's time is kept by ctest.
    if (arguments[0] == "timeout") arguments.erase(arguments.begin(), arguments.begin() + 2);
    for (const char* tool : {"sh", "bash", "strace", "setpriv", "nm", "python3", "valgrind", "diff"}) {
        if (arguments[0] == tool) skipTest("needs a program that Windows has not");
    }
    std::string line;
    for (const std::string& argument : arguments) line += (line.empty() ? "" : " ") + quoted(argument);

    const TestFolder scratch;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = openInherited("NUL", GENERIC_READ, OPEN_EXISTING);
    startup.hStdOutput = openInherited(scratch.path("output").c_str(), GENERIC_WRITE, CREATE_ALWAYS);
    startup.hStdError = openInherited(scratch.path("errors").c_str(), GENERIC_WRITE, CREATE_ALWAYS);

    std::vector<std::pair<std::string, std::string>> before;
    for (const std::string& variable : environment) {
        const std::size_t equals = variable.find('=');
        const std::string name = variable.substr(0, equals);
        const char* value = std::getenv(name.c_str());
        before.emplace_back(name, value == nullptr ? "" : value);
        _putenv_s(name.c_str(), variable.c_str() + equals + 1);
    }
    std::cout.flush();
    PROCESS_INFORMATION process{};
    const BOOL started = CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                        folder.empty() ? nullptr : folder.c_str(), &startup, &process);
    for (const auto& [name, value] : before) _putenv_s(name.c_str(), value.c_str());
    ProgramResult result;
    result.status = 127;
    if (started) {
        WaitForSingleObject(process.hProcess, INFINITE);
        DWORD status = 127;
        GetExitCodeProcess(process.hProcess, &status);
        result.status = static_cast<int>(status);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    for (const HANDLE handle : {startup.hStdInput, startup.hStdOutput, startup.hStdError})
        CloseHandle(handle);
    result.output = printed(scratch.path("output"));
    result.errors = printed(scratch.path("errors"));
    return result;
}

}  // namespace tests
