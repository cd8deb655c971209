// attributeReader.cpp
//
// Any bytes as attribute-list text. All expressions in them are read, once in blocks of some size and once
// from a stream: cells, errors, positions and what is left must be the same. The tree that an expression
// becomes is printed and read again: it must be the same tree, and printed again the same bytes.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "attrlist/CellPool.h"
#include "attrlist/reader.h"
#include "attrlist/writer.h"
#include "support/attributeTrees.h"

namespace {

using namespace tvxconv::attrlist;
using tests::Stream;
using tests::StreamKind;

void check(bool isTrue, const char* what) {
    if (isTrue) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

struct Reading {
    explicit Reading(std::FILE* stream) : top(readExpression(stream, line, column, error, pool)) {}

    CellPool pool;
    int line = -1;
    int column = -1;
    const char* error = "not set";
    const ListCell* top;
};

// What a tree is after it was written: values lose their quotes. False where it cannot be read back, because
// a quote in a name or key ends that, or a text is longer than a reader takes.
bool keepsItsShape(const AttributeNode& node) {
    constexpr std::size_t kMostOfString = 299997;
    const auto isPlain = [](std::string_view text) {
        return text.find('"') == std::string_view::npos && text.size() <= kMostOfString;
    };
    for (std::size_t i = 0; i < node.attributeCount(); ++i) {
        if (!isPlain(node.attributeAt(i)->key())) return false;
    }
    for (std::size_t i = 0; i < node.childCount(); ++i) {
        if (!keepsItsShape(*node.childAt(i))) return false;
    }
    return isPlain(node.name());
}

std::string printed(const AttributeNode& tree) {
    std::string text;
    printTree(tree, "type", [&](std::string_view piece) { text += piece; });
    return text;
}

std::string withoutQuotes(std::string text) {
    std::erase(text, '"');
    return text;
}

void checkTree(const ListCell* top) {
    AttributeNode tree("name", nullptr);
    buildTree(top, &tree, nullptr);
    const std::string text = printed(tree);
    if (!keepsItsShape(tree)) return;

    const Stream stream = tests::streamOf(text, StreamKind::memory);
    const Reading reading(stream.get());
    check(reading.error == nullptr, "what was printed cannot be read");
    check(tests::restOf(stream.get()) == "\n", "what was printed is more than one expression");
    AttributeNode again("name", nullptr);
    buildTree(rest(rest(reading.top)), &again, nullptr);
    check(tests::treeText(again) == withoutQuotes(tests::treeText(tree)), "the tree read back");
    check(printed(again) == text, "the tree printed again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    ReaderState inBlocks(tests::inBlocks(text, 1 + size % 61));
    const Stream singly = tests::streamOf(text, StreamKind::forward);
    for (bool isFirst = true, isAtEnd = false; !isAtEnd; isFirst = false) {
        CellPool pool;
        const char* error = "not set";
        const ListCell* const top = readExpression(inBlocks, error, pool);
        const Reading other(singly.get());
        check(error == other.error, "the error");
        // The state goes on counting; a stream is counted anew by each call.
        check(!isFirst || (inBlocks.line() == other.line && inBlocks.column() == other.column),
              "the position");
        check((top == nullptr) == (other.top == nullptr), "whether there is a cell");
        check(tests::cellText(top) == tests::cellText(other.top), "the cells");
        checkTree(top);
        const int next = inBlocks.get();
        check(next == std::fgetc(singly.get()), "what is left");
        isAtEnd = next == EOF;
        // A ")" stays there for ever; anything else is read with what follows.
        if (isAtEnd || next == ')') continue;
        inBlocks.putBack();
        check(std::ungetc(next, singly.get()) == next, "putting back");
    }
    return 0;
}
