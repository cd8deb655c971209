// report.h
//
// What the user is told: messages on standard error, the result on standard output.

#pragma once

#include <string>
#include <string_view>

#include "interface/hostStrings.h"

// "tvxconv: <text>" on standard error.
void tell(std::string_view text);

// A name as it can stand in a message: in quotes, with quotes, control characters and bytes that are no
// text escaped.
std::string inQuotes(const std::string& name);

struct ConversionResult {
    int status = 0;
    int errorCode = 0;  // the last error of the run, also where the conversion went on
    std::string errorMessage;
    std::string newProjectPath;
    CStringArray structure;
};

// Prints the listing, or the whole result as one JSON object. False when it could not be written.
bool printResult(const ConversionResult& result, bool json);
