// Looking at cells, and building the tree from them.

#include <charconv>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "attrlist/AttributeBlocks.h"
#include "attrlist/ListCell.h"
#include "attrlist/reader.h"

namespace tvxconv::attrlist {
namespace {

const char* textOf(const ListCell* cell) {
    return reinterpret_cast<const char*>(cell + 1);
}

}  // namespace

char kindOf(const ListCell* cell) {
    return cell != nullptr ? cell->kind : '\0';
}

ListCell* first(const ListCell* cell) {
    if (kindOf(cell) != 'L') return nullptr;
    const ListCell* const element = cell + kElementAt;
    return element->kind != '\0' ? const_cast<ListCell*>(element) : nullptr;
}

ListCell* rest(const ListCell* cell) {
    return kindOf(cell) == 'L' ? contentOf<ListCell*>(cell) : nullptr;
}

bool isAtom(const ListCell* cell) {
    return cell != nullptr && cell->kind != 'L';
}

const char* symbolText(const ListCell* cell) {
    return kindOf(cell) == 'S' ? textOf(cell) : "";
}

const char* stringText(const ListCell* cell) {
    return kindOf(cell) == 'Q' ? textOf(cell) : "";
}

const char* atomText(const ListCell* cell) {
    return kindOf(cell) == 'S' || kindOf(cell) == 'Q' ? textOf(cell) : nullptr;
}

const char* numberText(const ListCell* cell, char* buffer) {
    if (kindOf(cell) != 'N') {
        const char* const text = atomText(cell);
        return text != nullptr ? text : "";
    }
    constexpr std::ptrdiff_t kRoom = 31;  // and a NUL
    const double value = contentOf<double>(cell);
    const bool isInRange = value >= std::numeric_limits<std::int32_t>::min() &&
                           value <= std::numeric_limits<std::int32_t>::max();
    // to_chars prints like printf in the "C" locale, whatever locale the host has set.
    const bool isWhole = isInRange && value == static_cast<std::int32_t>(value);
    const auto end = isWhole ? std::to_chars(buffer, buffer + kRoom, static_cast<std::int32_t>(value))
                             : std::to_chars(buffer, buffer + kRoom, value, std::chars_format::general, 8);
    *end.ptr = '\0';
    return buffer;
}

// --- the tree ---

namespace {

bool isPair(const ListCell* element) {
    const ListCell* const second = rest(element);
    return isAtom(first(element)) && isAtom(first(second)) && rest(second) == nullptr;
}

// A list with the part of it that is left, and the node that it fills.
struct Level {
    const ListCell* next;
    AttributeNode* node;
    std::size_t nameSize;  // of the node's qualified name
};

}  // namespace

void buildTree(const ListCell* list, AttributeNode* node, NodeFactory factory) {
    AttributeNode* const root = node->root();
    // The qualified name of the current node, extended on the way down: asking each node for it would take
    // longer the deeper the tree is.
    std::string name;
    if (factory == nullptr) node->qualifiedName(name);
    AttributeBlocks blocks(AttributeBlocks::kForMany);
    std::vector<Level> levels;
    const auto enter = [&](const ListCell* content, AttributeNode* filled) {
        std::size_t pairs = 0;
        std::size_t others = 0;
        for (const ListCell* link = content; link != nullptr; link = rest(link)) {
            ++(isPair(first(link)) ? pairs : others);
        }
        filled->reserve(pairs, others);
        levels.push_back({content, filled, name.size()});
    };
    if (kindOf(list) == 'L') enter(list, node);
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == nullptr) {
            levels.pop_back();
            if (!levels.empty()) name.resize(levels.back().nameSize);
            continue;
        }
        const ListCell* const element = first(level.next);
        level.next = rest(level.next);
        AttributeNode* const parent = level.node;
        if (isPair(element)) {
            char number[32];
            const ListCell* const value = first(rest(element));
            parent->addAttribute(atomText(first(element)), numberText(value, number), blocks);
            continue;
        }
        const char* childName = atomText(first(element));
        if (childName == nullptr) childName = "";
        std::unique_ptr<AttributeNode> made(factory != nullptr
                                                ? factory(childName, parent)
                                                : AttributeNode::createNode(childName, parent, root, name));
        AttributeNode* const child = made.get();
        parent->adoptChild(child);
        static_cast<void>(made.release());
        const ListCell* const content = rest(element);
        if (child == nullptr || content == nullptr) continue;
        if (factory == nullptr) name.append(1, '.').append(child->name());
        enter(content, child);
    }
}

}  // namespace tvxconv::attrlist
