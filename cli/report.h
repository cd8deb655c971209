// report.h
//
// What the user is told: messages on standard error, the result on standard output.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "interface/hostStrings.h"

// "tvxconv: <text>" on standard error.
void tell(std::string_view text);

// A name as it can stand in a message: in quotes, with quotes, control characters and bytes that are no
// text escaped.
std::string inQuotes(const std::string& name);

struct RunResult {
    int status = 0;
    int errorCode = 0;  // the last error of the run, also where the conversion went on
    std::string errorMessage;
};

// Of a Draftel project.
struct ConversionResult : RunResult {
    std::string newProjectPath;
    CStringArray structure;
};

// Of a Tarnet library, which has a project in each cell and none of its own.
struct LibraryResult : RunResult {
    std::string libraryParentName;
    std::vector<std::string> structure;
};

// Tells the error of a run, if there is one.
void tellError(const RunResult& result);

// Prints the listing, or the whole result as one JSON object. False when it could not be written; the user
// has been told.
bool printResult(const ConversionResult& result, bool json);
bool printResult(const LibraryResult& result, bool json);
