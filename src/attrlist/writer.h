// writer.h
//
// Printing a tree as attribute-list text.

#pragma once

#include <functional>
#include <string_view>

#include "attrlist/AttributeNode.h"

namespace tvxconv::attrlist {

// Prints `document` and all below it, in quoted strings, each level indented by four blanks more; `typeName`
// stands behind the name of the document. Every "\" is doubled; a quote is left out of values, and stays as
// it is in names, keys and the type (a reader takes it for the end).
//
//   sink  gets the text in pieces, in order; a piece is valid during the call
void printTree(const AttributeNode& document, const char* typeName,
               const std::function<void(std::string_view)>& sink);

}  // namespace tvxconv::attrlist
