// commandLine.h
//
// The command line: what the user may give, and what was given.

#pragma once

#include <string>
#include <variant>

struct DraftelOptions {
    std::string project;      // absolute, with "/"
    std::string destination;  // absolute, with "/", no slash at its end; empty when in place
    bool inPlace = false;
    std::string report;  // the report file's name in the destination; empty for none
    bool json = false;
};

struct TarnetOptions {
    std::string library;  // absolute, with "/", no slash at its end
    std::string report;   // the report file's name in the library; empty for none
    bool json = false;
};

// Exit statuses of the program.
constexpr int kConverted = 0;
constexpr int kNotConverted = 1;
constexpr int kWrongCommandLine = 2;

// Reads the arguments. True if there is something to do; else help, the version or an error has been
// printed and `exitStatus` is set.
bool readCommandLine(int argc, char** argv, std::variant<DraftelOptions, TarnetOptions>& command,
                     int& exitStatus);
