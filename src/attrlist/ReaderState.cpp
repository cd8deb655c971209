#include "attrlist/ReaderState.h"

#include <cstring>
#include <utility>

namespace tvxconv::attrlist {

ReaderState::ReaderState(std::FILE* stream) : stream_(stream), begin_(&single_), at_(begin_), end_(begin_) {}

ReaderState::ReaderState(NextBlock nextBlock)
    : nextBlock_(std::move(nextBlock)), begin_(&single_), at_(begin_), end_(begin_) {}

void ReaderState::putBack() {
    --at_;
    tookBackLineEnd_ = *at_ == '\n';
    if (stream_ == nullptr) return;
    std::ungetc(static_cast<unsigned char>(*at_), stream_);
    end_ = at_;
}

int ReaderState::line() const {
    int line = lineBefore_;
    const char* at = begin_;
    while (const void* lineEnd = std::memchr(at, '\n', static_cast<std::size_t>(at_ - at))) {
        at = static_cast<const char*>(lineEnd) + 1;
        ++line;
    }
    return line;
}

int ReaderState::column() const {
    constexpr int kAfterLineEndPutBack = 80;
    if (tookBackLineEnd_) return kAfterLineEndPutBack;
    const std::string_view taken(begin_, static_cast<std::size_t>(at_ - begin_));
    const std::size_t lineEnd = taken.rfind('\n');
    return lineEnd == std::string_view::npos ? columnBefore_ + static_cast<int>(taken.size())
                                             : static_cast<int>(taken.size() - lineEnd - 1);
}

std::uint64_t ReaderState::count() const {
    return countBefore_ + static_cast<std::uint64_t>(at_ - begin_);
}

// Gets the next block when the current one is used up. Returns false at the end of the input.
bool ReaderState::fill() {
    const int lineReached = line();
    const int columnReached = column();
    countBefore_ = count();
    lineBefore_ = lineReached;
    columnBefore_ = columnReached;
    std::string_view block;
    if (stream_ == nullptr) {
        block = nextBlock_();
    } else if (const int c = std::fgetc(stream_); c != EOF) {
        single_ = static_cast<char>(c);
        block = {&single_, 1};
    }
    begin_ = at_ = block.empty() ? &single_ : block.data();
    end_ = begin_ + block.size();
    return !block.empty();
}

}  // namespace tvxconv::attrlist
