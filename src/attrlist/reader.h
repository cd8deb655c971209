// reader.h
//
// Reading attribute-list text: nested lists in parentheses of symbols, quoted strings and numbers. One call
// reads one expression from a stream into cells that live in a pool, and buildTree makes nodes and attributes
// of them. The form is told in docs/formats.md.
//
// Bytes are classed as in the "C" locale, whatever locale the host has set. Nesting costs memory, never the
// call stack. Texts are zero-terminated: a NUL in a quoted string ends its text, and what follows up to the
// closing quote is read and dropped. Outside of strings a NUL is an illegal character like any other.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "attrlist/AttributeNode.h"
#include "attrlist/CellPool.h"

namespace tvxconv::attrlist {

// One token or one link of a list. It belongs to its pool and goes with it.
struct ListCell;

// Reads one expression, from where the stream stands.
//
//   line, column  how far it came: lines from 1, and the bytes read of that line. Where the expression is a
//                 bare symbol or number that a line end follows, the column is 80.
//   error         null, or "Need closing )" (the input ended inside a list), or "Illegal character to start
//                 symbol name." (line and column are those of that character). The text is static.
//   pool          takes the cells
//
// Returns the cell at the top, or null: where the input ended or a ")" stands before any token, and after an
// error. The stream then stands just behind what was read, so the next call reads the next expression; behind
// a symbol or number that is right behind its last character. What a failing stream does not deliver counts
// as the end of the input.
ListCell* readExpression(std::FILE* stream, int& line, int& column, const char*& error, CellPool& pool);

// --- asking cells; a null cell may be asked anything ---

// A list is a chain of links: the element (null in an empty list) and the next link, null at the end. Both
// are null for what is no link.
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

// A number as text, in `buffer` (of 32 bytes): "-7" where it is a whole number of 32 bits, else with eight
// digits, as "%.8g" prints it: "0.5", "1.2345679e+08". The text of a symbol or string as it is; "" for
// anything else.
const char* numberText(const ListCell* cell, char* buffer);

// Adds to `node` what the elements of `list` tell. A list of two atoms is an attribute: (a 1), where a number
// becomes its numberText and counts as "" in the place of the key. Everything else is a child: its name is
// the first element ("" unless that is a symbol or string), its content the others. So (Group (a 1)) is a
// child with an attribute, and a bare atom or () an empty child without a name.
//
//   factory  makes the children, which are then adopted; null for addChild
void buildTree(const ListCell* list, AttributeNode* node, NodeFactory factory);

// --- the state of a reading ---

// The characters of a stream one by one, and the place that has been reached. They are read in blocks, and
// when the reading ends the stream is set back to where the last character was taken, so from outside it
// looks as if they had come singly. From a stream that cannot be set back (a pipe, a terminal) they do.
class ReaderState {
public:
    explicit ReaderState(std::FILE* stream);
    ~ReaderState();  // finish()
    ReaderState(const ReaderState&) = delete;
    ReaderState& operator=(const ReaderState&) = delete;

    // Takes the next character, or returns EOF.
    int get() {
        tookBackLineEnd_ = false;
        return at_ != end_ || fill() ? *at_++ : EOF;
    }

    // Takes back the character that get() has just returned (not EOF).
    void putBack() {
        --at_;
        tookBackLineEnd_ = *at_ == '\n';
    }

    // The line, from 1; the characters taken of it; those taken of all. How long a line was is not known any
    // more when its end is put back, so the column is 80 then, until the next get().
    int line() const;
    int column() const;
    std::uint64_t count() const;

    // The characters at hand without reading on, for a look ahead. A NUL stands at end().
    const unsigned char* at() const { return at_; }
    const unsigned char* end() const { return end_; }
    // Takes them up to `place`, which lies from at() to end().
    void advanceTo(const unsigned char* place) {
        tookBackLineEnd_ = false;
        at_ = place;
    }

    // Leaves the stream just behind the last character taken. Nothing can be got or put back any more.
    void finish();

private:
    bool fill();
    bool setBack(long offset, std::uint64_t size, const unsigned char* expected);

    std::FILE* stream_;
    const unsigned char* begin_;  // of the block
    const unsigned char* at_;
    const unsigned char* end_;
    bool tookBackLineEnd_ = false;
    bool isFinished_ = false;
    bool sawEnd_ = false;
    bool singly_ = false;    // the stream cannot be set back
    long startOffset_ = -1;  // where the stream stood at first,
    long blockOffset_ = -1;  // and before the block was read
    int lineBefore_ = 1;     // the place at the beginning of the block
    int columnBefore_ = 0;
    std::uint64_t countBefore_ = 0;
    std::unique_ptr<unsigned char[]> block_;
    std::size_t blockSize_ = 0;
};

}  // namespace tvxconv::attrlist
