// AttributeBlocks.h
//
// Memory for the many attributes of a tree that is being built: an allocation for each would take twice as
// long.

#pragma once

#include <cstddef>
#include <string_view>

#include "attrlist/AttributeNode.h"

namespace tvxconv::attrlist {

// Attributes are taken from blocks, each of which goes with the last attribute in it.
class AttributeBlocks {
public:
    AttributeBlocks() = default;
    ~AttributeBlocks();  // what has been made keeps its memory
    AttributeBlocks(const AttributeBlocks&) = delete;
    AttributeBlocks& operator=(const AttributeBlocks&) = delete;

private:
    friend class Attribute;
    friend class AttributeNode;

    struct Block {
        std::size_t users;  // the attributes in it, and we ourselves as long as we take from it
    };

    Attribute::Owner create(std::string_view key, std::string_view value, AttributeNode* owner);
    static void release(Block* block);

    Block* block_ = nullptr;
    std::size_t size_ = 0;  // of the block
    std::size_t used_ = 0;
};

}  // namespace tvxconv::attrlist
