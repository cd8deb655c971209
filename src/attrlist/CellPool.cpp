#include "attrlist/CellPool.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace tvxconv::attrlist {
namespace {

// Not protected against threads: the library has none.
std::size_t inUse = 0;
std::size_t mostInUse = 0;
CellPool::OutOfMemoryHandler outOfMemoryHandler = nullptr;

void* obtain(std::size_t bytes) {
    for (int attempt = 1;; ++attempt) {
        if (void* memory = std::malloc(bytes)) return memory;
        if (outOfMemoryHandler == nullptr) {
            std::perror("malloc");
            std::exit(-1);
        }
        outOfMemoryHandler(bytes, attempt);
    }
}

}  // namespace

CellPool::~CellPool() {
    while (current_ != nullptr) {
        Block* next = current_->next;
        std::free(current_);
        current_ = next;
    }
    inUse -= bytes_;
}

void* CellPool::allocate(std::size_t bytes) {
    return std::memset(allocateUncleared(bytes), 0, bytes);
}

void* CellPool::allocateFromNewBlock(std::size_t bytes) {
    static_assert(sizeof(Block) == 16, "pieces begin at a multiple of 8");
    const std::size_t capacity = std::max(bytes, kBlockBytes);
    const std::size_t size =
        capacity + std::min(sizeof(Block), std::numeric_limits<std::size_t>::max() - capacity);
    auto* block = static_cast<Block*>(obtain(size));
    bytes_ += size;
    inUse += size;
    mostInUse = std::max(mostInUse, inUse);
    if (capacity == kBlockBytes || current_ == nullptr) {
        block->next = current_;
        current_ = block;
    } else {  // a block of one large piece is full, so the current one stays first
        block->next = current_->next;
        current_->next = block;
    }
    const bool isShared = capacity == kBlockBytes;
    block->capacity = isShared ? kBlockBytes : 0;
    block->used = isShared ? static_cast<std::uint32_t>(bytes) : 0;
    return block + 1;
}

std::size_t CellPool::bytesInUse() {
    return inUse;
}

std::size_t CellPool::highWaterMark() {
    return mostInUse;
}

CellPool::OutOfMemoryHandler CellPool::setOutOfMemoryHandler(OutOfMemoryHandler handler) {
    const OutOfMemoryHandler before = outOfMemoryHandler;
    outOfMemoryHandler = handler;
    return before;
}

}  // namespace tvxconv::attrlist
