// CellPool.h
//
// Scratch memory for the cells of one reading: handed out in small pieces from large blocks, never given back
// singly, released as a whole with the pool.

#pragma once

#include <cstddef>
#include <cstdint>

namespace tvxconv::attrlist {

class CellPool {
public:
    // The bytes that a block has for pieces; its header of 16 comes on top.
    static constexpr std::size_t kBlockBytes = 8000;

    CellPool() = default;
    ~CellPool();  // releases everything that was handed out
    CellPool(const CellPool&) = delete;
    CellPool& operator=(const CellPool&) = delete;

    // `bytes` zeros, at an address that is a multiple of 8 (of 4 for 4 to 7 bytes, of 2 below). A piece that
    // is larger than a block gets one of its own. Never null: see setOutOfMemoryHandler.
    void* allocate(std::size_t bytes);

    // The same, but with anything in it: for a caller that sets every byte.
    void* allocateUncleared(std::size_t bytes);

    // The bytes of all blocks of all pools of the process, headers included: now, and the most there were.
    static std::size_t bytesInUse();
    static std::size_t highWaterMark();

    // Has `handler` called when the system has no memory for a block, with the size of that and the number of
    // the attempt, from 1; then the system is asked again. It may throw: nothing has changed then. Without a
    // handler (null) "malloc" is reported through perror and the program ends with status -1. Returns the
    // handler that there was before.
    using OutOfMemoryHandler = void (*)(std::size_t bytes, int attempt);
    static OutOfMemoryHandler setOutOfMemoryHandler(OutOfMemoryHandler handler);

private:
    struct Block {
        alignas(8) Block* next;
        std::uint32_t used;
        std::uint32_t capacity;
    };

    void* allocateFromNewBlock(std::size_t bytes);

    Block* current_ = nullptr;  // the block that pieces are taken from, at the front of the chain
    std::size_t bytes_ = 0;     // of all blocks of this pool
};

inline void* CellPool::allocateUncleared(std::size_t bytes) {
    if (current_ != nullptr && bytes <= kBlockBytes) {
        const std::uint32_t mask = bytes >= 8 ? 7 : bytes >= 4 ? 3 : 1;
        const std::uint32_t place = (current_->used + mask) & ~mask;
        const std::uint32_t end = place + static_cast<std::uint32_t>(bytes);
        if (end <= current_->capacity) {
            current_->used = end;
            return reinterpret_cast<char*>(current_ + 1) + place;
        }
    }
    return allocateFromNewBlock(bytes);
}

}  // namespace tvxconv::attrlist
