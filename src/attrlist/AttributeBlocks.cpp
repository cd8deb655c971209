#include "attrlist/AttributeBlocks.h"

#include <algorithm>
#include <new>

namespace tvxconv::attrlist {

AttributeBlocks::~AttributeBlocks() {
    if (block_ != nullptr) release(block_);
}

void AttributeBlocks::release(Block* block) {
    if (--block->users == 0) ::operator delete(block);
}

Attribute::Owner AttributeBlocks::create(std::string_view key, std::string_view value, AttributeNode* owner) {
    // Small blocks first: the tree may be small.
    constexpr std::size_t kSmallestBlock = 1024;
    constexpr std::size_t kLargestBlock = 64 * 1024;
    const std::size_t size = Attribute::sizeFor(key, value);
    std::size_t place = (used_ + alignof(Attribute) - 1) / alignof(Attribute) * alignof(Attribute);
    if (size > size_ || place > size_ - size) {
        if (size > kLargestBlock / 4) {
            return Attribute::Owner(Attribute::createAt(::operator new(size), 0, key, value, owner));
        }
        const std::size_t blockSize =
            std::clamp(std::max(2 * size_, 4 * size), kSmallestBlock, kLargestBlock);
        Block* const block = new (::operator new(blockSize)) Block{1};
        if (block_ != nullptr) release(block_);
        block_ = block;
        size_ = blockSize;
        place = sizeof(Block);
    }
    used_ = place + size;
    ++block_->users;
    return Attribute::Owner(
        Attribute::createAt(reinterpret_cast<char*>(block_) + place, place, key, value, owner));
}

}  // namespace tvxconv::attrlist
