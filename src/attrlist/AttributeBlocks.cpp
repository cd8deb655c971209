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
    constexpr std::size_t kAlignment = alignof(Attribute);
    static_assert(sizeof(Block) % kAlignment == 0, "the first attribute follows the block's header");
    const std::size_t size = (Attribute::sizeFor(key, value) + kAlignment - 1) / kAlignment * kAlignment;
    if (size > size_ - used_) {
        const std::size_t blockSize = std::max(blockSize_, sizeof(Block) + size);
        Block* const block = new (::operator new(blockSize)) Block{1};
        if (block_ != nullptr) release(block_);
        block_ = block;
        size_ = blockSize;
        used_ = sizeof(Block);
    }
    auto* const attribute = new (reinterpret_cast<char*>(block_) + used_) Attribute(owner, used_, key, value);
    ++block_->users;
    used_ += size;
    return Attribute::Owner(attribute);
}

}  // namespace tvxconv::attrlist
