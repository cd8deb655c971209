#include <algorithm>
#include <cstring>
#include <iterator>

#include "attrlist/reader.h"

namespace tvxconv::attrlist {
namespace {

constexpr std::size_t kSmallestBlock = 4096;
constexpr std::size_t kLargestBlock = 256 * 1024;
constexpr unsigned char kEmptyBlock[] = {'\0'};

}  // namespace

ReaderState::ReaderState(std::FILE* stream)
    : stream_(stream), begin_(kEmptyBlock), at_(kEmptyBlock), end_(kEmptyBlock) {}

ReaderState::~ReaderState() {
    finish();
}

int ReaderState::line() const {
    // In pieces whose count a byte can hold: compilers make instructions for many bytes at once of that.
    constexpr std::ptrdiff_t kPiece = 255;
    int lines = lineBefore_;
    for (const unsigned char* at = begin_; at != at_;) {
        const unsigned char* const end = at + std::min(kPiece, at_ - at);
        unsigned char count = 0;
        for (; at != end; ++at) count = static_cast<unsigned char>(count + (*at == '\n' ? 1 : 0));
        lines += count;
    }
    return lines;
}

int ReaderState::column() const {
    if (tookBackLineEnd_) return 80;
    const auto lineEnd = std::find(std::reverse_iterator(at_), std::reverse_iterator(begin_), '\n');
    const auto taken = static_cast<int>(at_ - lineEnd.base());
    return lineEnd.base() == begin_ ? columnBefore_ + taken : taken;
}

std::uint64_t ReaderState::count() const {
    return countBefore_ + static_cast<std::uint64_t>(at_ - begin_);
}

// Reads the next block, when the last one is used up. False at the end of the input.
bool ReaderState::fill() {
    const int lineReached = line();
    const int columnReached = column();
    const std::uint64_t countReached = count();
    if (!singly_) {
        blockOffset_ = std::ftell(stream_);
        if (countReached == 0) startOffset_ = blockOffset_;
        singly_ = blockOffset_ == -1;
    }
    // Small blocks first: an expression may be short, with much behind it that is not ours.
    const std::size_t size = singly_ ? 1 : std::clamp(blockSize_ * 4, kSmallestBlock, kLargestBlock);
    if (size > blockSize_) {
        begin_ = at_ = end_ = kEmptyBlock;
        block_ = std::make_unique_for_overwrite<unsigned char[]>(size + 1);
        blockSize_ = size;
    }
    lineBefore_ = lineReached;
    columnBefore_ = columnReached;
    countBefore_ = countReached;
    std::size_t got = 0;
    if (!singly_) {
        got = std::fread(block_.get(), 1, size, stream_);
    } else if (const int c = std::fgetc(stream_); c != EOF) {
        block_[0] = static_cast<unsigned char>(c);
        got = 1;
    }
    block_[got] = '\0';
    begin_ = at_ = block_.get();
    end_ = begin_ + got;
    sawEnd_ = got == 0;
    return !sawEnd_;
}

void ReaderState::finish() {
    if (isFinished_) return;
    isFinished_ = true;
    if (singly_) {
        if (at_ != end_) std::ungetc(*at_, stream_);
        return;
    }
    // Where all was taken the stream stands right, unless it knows of an end that nobody has asked for yet.
    if (at_ == end_ && (sawEnd_ || std::feof(stream_) == 0)) return;
    if (setBack(blockOffset_, static_cast<std::uint64_t>(at_ - begin_), begin_)) return;
    // Some runtimes are wrong about places in the middle of a text file with foreign line ends.
    setBack(startOffset_, count(), nullptr);
}

// Goes to the offset and past so many characters. False where the stream cannot, or where the characters are
// not those expected (if any).
bool ReaderState::setBack(long offset, std::uint64_t size, const unsigned char* expected) {
    if (std::fseek(stream_, offset, SEEK_SET) != 0) return false;
    unsigned char passed[4096];
    while (size > 0) {
        const auto piece = static_cast<std::size_t>(std::min<std::uint64_t>(size, sizeof passed));
        if (std::fread(passed, 1, piece, stream_) != piece) return false;
        if (expected != nullptr && std::memcmp(passed, expected, piece) != 0) return false;
        if (expected != nullptr) expected += piece;
        size -= piece;
    }
    return true;
}

}  // namespace tvxconv::attrlist
