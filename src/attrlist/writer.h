// writer.h
//
// Printing a tree as attribute-list text.

#pragma once

#include <functional>
#include <string_view>

#include "attrlist/AttributeNode.h"

namespace tvxconv::attrlist {

// Prints `document` and everything below it as quoted strings, each level indented by four more blanks;
// `typeName` follows the name of the document. Each "\" is doubled. Quotes are left out of values; in
// names, keys and the type they stay, and a reader takes them for the end of the string.
//
//   sink  gets the text in many small pieces, in order; a piece is valid only during the call
void printTree(const AttributeNode& document, const char* typeName,
               const std::function<void(std::string_view)>& sink);

}  // namespace tvxconv::attrlist
