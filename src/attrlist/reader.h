// reader.h
//
// Reading attribute-list text: nested lists in parentheses, made of symbols, quoted strings and numbers.
// Each call reads one expression into cells that a pool owns; buildTree makes nodes and attributes from
// them. The format is described in docs/formats.md.
//
// Characters are classified as in the "C" locale, whatever locale the host has set. Nesting takes memory, but
// no call stack. Texts are zero-terminated: a NUL in a quoted string ends its text, and the rest up to the
// closing quote is read and dropped. Outside of strings a NUL is an illegal character.

#pragma once

#include <cstdio>

#include "attrlist/AttributeNode.h"
#include "attrlist/CellPool.h"
#include "attrlist/ReaderState.h"

namespace tvxconv::attrlist {

// A token, or a link of a list. Its pool owns it.
struct ListCell;

// Reads one expression from the current position of the stream.
//
//   line, column  the position reached: lines from 1, and the bytes read of that line. If the expression is a
//                 bare symbol or number followed by a line end, the column is 80.
//   error         null, or "Need closing )" (the input ended inside a list), or "Illegal character to start
//                 symbol name." (line and column are those of that character). The text is static.
//   pool          takes the cells
//
// Returns the top cell. Returns null if the input ends, or a ")" comes, before any token, and on an error.
// The stream then stands right after what was read, also after a bare symbol or number, so the next call
// reads the next expression. A read error of the stream counts as the end of the input.
ListCell* readExpression(std::FILE* stream, int& line, int& column, const char*& error, CellPool& pool);

// The same for a state that the caller keeps for the next expression.
ListCell* readExpression(ReaderState& input, const char*& error, CellPool& pool);

// --- looking at cells; null is allowed everywhere ---

// A list is a chain of links. first: the element, null in an empty list. rest: the next link, null at the
// end. Both are null if the cell is not a link.
ListCell* first(const ListCell* cell);
ListCell* rest(const ListCell* cell);

// 'L' link of a list, 'S' symbol, 'Q' quoted string, 'N' number; 0 for null.
char kindOf(const ListCell* cell);

// Whether it is a symbol, a string or a number.
bool isAtom(const ListCell* cell);

// The text of a symbol, or of a string; "" for anything else.
const char* symbolText(const ListCell* cell);
const char* stringText(const ListCell* cell);

// The text of a symbol or string; null for anything else.
const char* atomText(const ListCell* cell);

// A number as text, written to `buffer` (of 32 bytes): a whole number of 32 bits as "-7", any other as
// "%.8g" prints it: "0.5", "1.2345679e+08". The text of a symbol or string is returned unchanged; for
// anything else "" is.
const char* numberText(const ListCell* cell, char* buffer);

// Adds the elements of `list` to `node`. A list of two atoms is an attribute: (a 1). A number as its value
// becomes its numberText, a number as its key an empty text. Any other element is a child: its first element
// is the name ("" unless that is a symbol or string), the others are the content. So (Group (a 1)) is a child
// with one attribute, and a bare atom or () is an empty child without a name.
//
//   factory  makes the children, which are then adopted; if null, they are made as by addChild
void buildTree(const ListCell* list, AttributeNode* node, NodeFactory factory);

}  // namespace tvxconv::attrlist
