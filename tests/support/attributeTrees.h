// attributeTrees.h
//
// Attribute lists in tests: streams of every kind, cells and trees as text, trees made up at random.

#pragma once

#ifndef _WIN32
#include <sys/mman.h>
#endif

#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include "attrlist/AttributeNode.h"
#include "attrlist/CellPool.h"
#include "attrlist/reader.h"

namespace tests {

namespace attrlist = tvxconv::attrlist;

struct StreamCloser {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, StreamCloser>;

// A stream that reads `text`: from a file, from memory, from something that can only go forward, or from
// something that claims to be at its beginning wherever it is.
enum class StreamKind { file, memory, forward, misplaced };
#ifdef _WIN32
constexpr StreamKind kStreamKinds[] = {StreamKind::file};
#else
constexpr StreamKind kStreamKinds[] = {StreamKind::file, StreamKind::memory, StreamKind::forward,
                                       StreamKind::misplaced};
#endif

#ifdef _WIN32
// The others are not to be had there.
inline Stream streamOf(const std::string& text, StreamKind = StreamKind::file) {
    Stream stream(std::tmpfile());
    std::fwrite(text.data(), 1, text.size(), stream.get());
    std::rewind(stream.get());
    return stream;
}
#else
inline Stream streamOf(const std::string& text, StreamKind kind = StreamKind::file) {
    if (kind == StreamKind::file) {
        Stream stream(fdopen(memfd_create("text", 0), "w+"));
        std::fwrite(text.data(), 1, text.size(), stream.get());
        std::rewind(stream.get());
        return stream;
    }
    if (kind == StreamKind::memory) {
        // Opened for update, so that nothing is added to the text; the stream keeps a copy of it.
        Stream stream(fmemopen(nullptr, text.size() + 1, "w+"));
        std::fwrite(text.data(), 1, text.size(), stream.get());
        std::fflush(stream.get());
        std::rewind(stream.get());
        return stream;
    }
    struct Source {
        std::string text;
        std::size_t at = 0;
    };
    cookie_io_functions_t functions{};
    functions.read = [](void* cookie, char* buffer, std::size_t size) {
        auto& source = *static_cast<Source*>(cookie);
        const std::size_t copied = source.text.copy(buffer, size, source.at);
        source.at += copied;
        return static_cast<ssize_t>(copied);
    };
    functions.close = [](void* cookie) {
        delete static_cast<Source*>(cookie);
        return 0;
    };
    if (kind == StreamKind::misplaced) {
        functions.seek = [](void*, off64_t* offset, int) {
            *offset = 0;
            return 0;
        };
    }
    return Stream(fopencookie(new Source{text}, "r", functions));
}
#endif

// Delivers `text`, which must outlive it, in blocks of this size.
inline attrlist::ReaderState::NextBlock inBlocks(std::string_view text, std::size_t size) {
    return [text, size]() mutable {
        const std::string_view block = text.substr(0, size);
        text.remove_prefix(block.size());
        return block;
    };
}

// What the stream still holds.
inline std::string restOf(std::FILE* stream) {
    std::string rest;
    for (int c = std::fgetc(stream); c != EOF; c = std::fgetc(stream)) rest += static_cast<char>(c);
    return rest;
}

// Cells as text: S:a for a symbol, Q:a for a string, N:1 for a number, nil for null, lists in parentheses.
inline std::string cellText(const attrlist::ListCell* cell) {
    char number[32];
    switch (attrlist::kindOf(cell)) {
        case '\0':
            return "nil";
        case 'S':
            return std::string("S:") + attrlist::symbolText(cell);
        case 'Q':
            return std::string("Q:") + attrlist::stringText(cell);
        case 'N':
            return std::string("N:") + attrlist::numberText(cell, number);
        default:
            break;
    }
    std::string text;
    for (const attrlist::ListCell* link = cell; link != nullptr; link = attrlist::rest(link)) {
        if (attrlist::kindOf(link) != 'L') return "a link that is none";
        text += text.empty() ? '(' : ' ';
        text += cellText(attrlist::first(link));
    }
    return text += ')';
}

// A tree as text: name{key=value key=value child{...}}. Parents and owners that are wrong show, too.
inline std::string treeText(const attrlist::AttributeNode& node) {
    std::string parts;
    const auto add = [&](const std::string& part) {
        if (!parts.empty()) parts += ' ';
        parts += part;
    };
    for (std::size_t i = 0; i < node.attributeCount(); ++i) {
        const attrlist::Attribute& attribute = *node.attributeAt(i);
        add(std::string(attribute.key()).append(1, '=').append(attribute.value()));
        if (attribute.owner() != &node) add("(owned by another)");
    }
    for (std::size_t i = 0; i < node.childCount(); ++i) {
        add(treeText(*node.childAt(i)));
        if (node.childAt(i)->parent() != &node) add("(child of another)");
    }
    return std::string(node.name()).append(1, '{').append(parts).append(1, '}');
}

// Any text without a NUL or a quote: what is written comes back the same.
template <class Random>
std::string randomText(Random& random) {
    static const std::string special = "\\\n\t ()-_.;'/\x80\xff";
    std::string text;
    for (std::size_t left = random() % 12; left > 0; --left) {
        text +=
            random() % 3 == 0 ? special[random() % special.size()] : static_cast<char>('a' + random() % 26);
    }
    return text;
}

template <class Random>
void fillAtRandom(attrlist::AttributeNode& node, Random& random, int depth) {
    for (std::size_t left = random() % 5; left > 0; --left) {
        node.addAttribute(randomText(random).c_str(), randomText(random).c_str());
    }
    if (depth == 0) return;
    for (std::size_t left = random() % 4; left > 0; --left) {
        fillAtRandom(*node.addChild(randomText(random).c_str()), random, depth - 1);
    }
}

}  // namespace tests
