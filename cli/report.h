// report.h
//
// Messages to the user on standard error, the result on standard output.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "interface/hostStrings.h"

// "tvxconv: <text>" on standard error.
void tell(std::string_view text);

// A name for use in a message: in quotes, with quotes, control characters and bytes that are not text
// escaped.
std::string inQuotes(const std::string& name);

struct RunResult {
    int status = 0;
    int errorCode = 0;  // the last error of the run, also if the conversion went on
    std::string errorMessage;
};

// The result for a Draftel project.
struct ConversionResult : RunResult {
    std::string newProjectPath;
    CStringArray structure;
};

// The result for a Tarnet library. Each cell has a project, the library itself has none.
struct LibraryResult : RunResult {
    std::string libraryParentName;
    std::vector<std::string> structure;
};

// Prints the error of a run, if there is one.
void tellError(const RunResult& result);

// Prints the listing, or the whole result as one JSON object. False if it could not be written; the user
// has been told.
bool printResult(const ConversionResult& result, bool json);
bool printResult(const LibraryResult& result, bool json);
