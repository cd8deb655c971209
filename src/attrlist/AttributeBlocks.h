// AttributeBlocks.h
//
// The memory of attributes. Reading a file puts many of them in one block. One allocation for each would
// cost 0.15 times the time of RapidJSON when reading a list of 64 MiB, and double the time of deleting the
// tree.

#pragma once

#include <cstddef>
#include <string_view>

#include "attrlist/AttributeNode.h"

namespace tvxconv::attrlist {

// Makes attributes in blocks. A block is freed with the last attribute in it.
class AttributeBlocks {
public:
    // The size of a block; a larger attribute gets a block of exactly its size.
    static constexpr std::size_t kForMany = 32 * 1024;
    static constexpr std::size_t kForOne = 0;

    explicit AttributeBlocks(std::size_t blockSize) : blockSize_(blockSize) {}
    ~AttributeBlocks();  // the attributes stay
    AttributeBlocks(const AttributeBlocks&) = delete;
    AttributeBlocks& operator=(const AttributeBlocks&) = delete;

    Attribute::Owner create(std::string_view key, std::string_view value, AttributeNode* owner);

private:
    friend class Attribute;

    struct Block {
        std::size_t users;  // the attributes in it, and the AttributeBlocks that still fills it
    };

    static void release(Block* block);

    std::size_t blockSize_;
    Block* block_ = nullptr;  // the block being filled
    std::size_t size_ = 0;    // the size of that block
    std::size_t used_ = 0;
};

}  // namespace tvxconv::attrlist
