#include "attrlist/AttributeNode.h"

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

#include "attrlist/AttributeBlocks.h"
#include "fsutil/letterCase.h"

namespace tvxconv::attrlist {
namespace {

std::string_view textOf(const char* text) {
    return text != nullptr ? std::string_view(text) : std::string_view();
}

}  // namespace

std::size_t Attribute::sizeFor(std::string_view key, std::string_view value) {
    if (key.size() >= std::numeric_limits<std::uint32_t>::max()) throw std::length_error("attribute key");
    return sizeof(Attribute) + key.size() + 1 + value.size() + 1;
}

Attribute::Attribute(AttributeNode* owner, std::size_t placeInBlock, std::string_view key,
                     std::string_view value)
    : owner_(owner),
      placeInBlock_(static_cast<std::uint32_t>(placeInBlock)),
      valueAt_(static_cast<std::uint32_t>(key.size() + 1)) {
    char* const text = reinterpret_cast<char*>(this + 1);
    *std::copy(key.begin(), key.end(), text) = '\0';
    *std::copy(value.begin(), value.end(), text + valueAt_) = '\0';
}

void Attribute::Deleter::operator()(Attribute* attribute) const {
    char* const block = reinterpret_cast<char*>(attribute) - attribute->placeInBlock_;
    attribute->~Attribute();
    AttributeBlocks::release(reinterpret_cast<AttributeBlocks::Block*>(block));
}

AttributeNode::AttributeNode(const char* name, AttributeNode* parent)
    : name_(textOf(name)), parent_(parent) {}

AttributeNode::~AttributeNode() {
    leaveParent();
    // Goes down to a node without children, deletes it and returns to its parent. This needs neither
    // recursion, however deep the tree is, nor memory.
    AttributeNode* node = this;
    for (;;) {
        if (!node->children_.empty()) {
            node = node->children_.back();
        } else if (node == this) {
            break;
        } else {
            AttributeNode* parent = node->parent_;
            parent->children_.pop_back();
            node->isListed_ = false;
            delete node;
            node = parent;
        }
    }
}

std::string AttributeNode::typeKeyFor(const char*) {
    return "unknown";
}

NodeFactory AttributeNode::factoryFor(const char*) {
    return nullptr;
}

Attribute* AttributeNode::firstAttribute() {
    if (attributes_.empty()) return nullptr;
    nextAttribute_ = 1;
    return attributes_.front().get();
}

Attribute* AttributeNode::nextAttribute() {
    return nextAttribute_ < attributes_.size() ? attributes_[nextAttribute_++].get() : nullptr;
}

// The number of the first attribute with this key, or attributes_.size() if there is none.
std::size_t AttributeNode::indexOf(const char* key) const {
    if (key == nullptr) return attributes_.size();
    const auto found = std::find_if(attributes_.begin(), attributes_.end(), [&](const auto& attribute) {
        return fsutil::equalIgnoringCase(attribute->key(), key);
    });
    return static_cast<std::size_t>(found - attributes_.begin());
}

Attribute* AttributeNode::findAttribute(const char* key) const {
    const std::size_t index = indexOf(key);
    return index < attributes_.size() ? attributes_[index].get() : nullptr;
}

const char* AttributeNode::attributeValue(const char* key) const {
    const Attribute* attribute = findAttribute(key);
    return attribute != nullptr ? attribute->value() : nullptr;
}

Attribute* AttributeNode::addAttribute(const char* key, const char* value) {
    AttributeBlocks block(AttributeBlocks::kForOne);
    return addAttribute(key, value, block);
}

Attribute* AttributeNode::addAttribute(const char* key, const char* value, AttributeBlocks& blocks) {
    return attributes_.emplace_back(blocks.create(textOf(key), textOf(value), this)).get();
}

void AttributeNode::removeAttribute(const char* key) {
    const std::size_t index = indexOf(key);
    if (index == attributes_.size()) return;
    attributes_.erase(attributes_.begin() + static_cast<std::ptrdiff_t>(index));
    if (index < nextAttribute_) --nextAttribute_;
}

void AttributeNode::removeAllAttributes() {
    attributes_.clear();
    nextAttribute_ = 0;
}

AttributeNode* AttributeNode::firstChild() {
    if (children_.empty()) return nullptr;
    nextChild_ = 1;
    return children_.front();
}

AttributeNode* AttributeNode::nextChild() {
    return nextChild_ < children_.size() ? children_[nextChild_++] : nullptr;
}

AttributeNode* AttributeNode::findChild(const char* name) const {
    if (name == nullptr) return nullptr;
    const auto found = std::find_if(children_.begin(), children_.end(), [&](const AttributeNode* child) {
        return fsutil::equalIgnoringCase(child->name_, name);
    });
    return found != children_.end() ? *found : nullptr;
}

AttributeNode* AttributeNode::addChild(const char* name) {
    std::unique_ptr<AttributeNode> child(createNode(name, this));
    adoptChild(child.get());
    return child.release();
}

AttributeNode* AttributeNode::adoptChild(AttributeNode* node) {
    if (node == nullptr) return nullptr;
    node->leaveParent();
    children_.push_back(node);
    node->parent_ = this;
    node->isListed_ = true;
    return node;
}

void AttributeNode::leaveParent() {
    if (!isListed_) return;
    isListed_ = false;
    auto& siblings = parent_->children_;
    const auto place = std::find(siblings.rbegin(), siblings.rend(), this).base() - 1;
    if (static_cast<std::size_t>(place - siblings.begin()) < parent_->nextChild_) --parent_->nextChild_;
    siblings.erase(place);
}

AttributeNode* AttributeNode::root() {
    AttributeNode* node = this;
    while (node->parent_ != nullptr) node = node->parent_;
    return node;
}

const AttributeNode* AttributeNode::root() const {
    const AttributeNode* node = this;
    while (node->parent_ != nullptr) node = node->parent_;
    return node;
}

void AttributeNode::qualifiedName(std::string& out) {
    out.clear();
    std::size_t size = name_.size();
    for (const AttributeNode* node = parent_; node != nullptr; node = node->parent_) {
        size += node->name_.size() + 1;
    }
    // Filled from its end, because the links lead upwards.
    out.resize(size, '.');
    for (const AttributeNode* node = this;; node = node->parent_) {
        size -= node->name_.size();
        node->name_.copy(out.data() + size, node->name_.size());
        if (size == 0 && node->parent_ == nullptr) break;
        --size;
    }
}

AttributeNode* AttributeNode::createNode(const char* name, AttributeNode* parent) {
    std::string key;
    parent->qualifiedName(key);
    return createNode(name, parent, parent->root(), key);
}

// The same for a caller that knows the root and the parent's qualified name: the deeper the parent, the
// longer it takes to find them. `parentKey` is unchanged afterwards.
AttributeNode* AttributeNode::createNode(const char* name, AttributeNode* parent, AttributeNode* root,
                                         std::string& parentKey) {
    const std::size_t size = parentKey.size();
    parentKey += '.';
    parentKey += root->typeKeyFor(name);
    const NodeFactory factory = root->factoryFor(parentKey.c_str());
    parentKey.resize(size);
    return factory != nullptr ? factory(name, parent) : new AttributeNode(name, parent);
}

void AttributeNode::reserve(std::size_t attributes, std::size_t children) {
    if (attributes_.empty()) attributes_.reserve(attributes);
    if (children_.empty()) children_.reserve(children);
}

}  // namespace tvxconv::attrlist
