// ReaderState.h
//
// Attribute-list text as the reader takes it: character by character, with line and column.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string_view>

namespace tvxconv::attrlist {

class ReaderState {
public:
    // Returns the next piece of the text, empty at the end. It stays valid until the next call.
    using NextBlock = std::function<std::string_view()>;

    // Reads a stream with fgetc and ungetc, so that the stream is always right after the last character
    // taken. The stream must outlive the state.
    explicit ReaderState(std::FILE* stream);

    // Reads the blocks that `nextBlock` returns.
    explicit ReaderState(NextBlock nextBlock);

    ReaderState(const ReaderState&) = delete;
    ReaderState& operator=(const ReaderState&) = delete;

    // Takes the next character, or returns EOF.
    int get() {
        tookBackLineEnd_ = false;
        return at_ != end_ || fill() ? static_cast<unsigned char>(*at_++) : EOF;
    }

    // Puts back the character that get() has just returned (not EOF).
    void putBack();

    // The current line, from 1; the characters taken from that line; all characters taken. After a line end
    // was put back the column is 80 until the next get(): the length of that line is no longer known.
    int line() const;
    int column() const;
    std::uint64_t count() const;

    // The characters that can be taken without reading on, possibly none; skip() takes the first of them.
    std::string_view ahead() const { return {at_, static_cast<std::size_t>(end_ - at_)}; }
    void skip(std::size_t characters) {
        tookBackLineEnd_ = false;
        at_ += characters;
    }

private:
    bool fill();

    std::FILE* stream_ = nullptr;  // null if there is nextBlock_
    NextBlock nextBlock_;
    char single_ = '\0';  // the block of a stream
    const char* begin_;   // the beginning of the block
    const char* at_;      // the next character
    const char* end_;
    bool tookBackLineEnd_ = false;
    int lineBefore_ = 1;  // the position at the beginning of the block
    int columnBefore_ = 0;
    std::uint64_t countBefore_ = 0;
};

}  // namespace tvxconv::attrlist
