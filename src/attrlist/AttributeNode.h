// AttributeNode.h
//
// The tree of an attribute-list file: named nodes, each with a list of attributes (a key and a value, both
// text) and a list of children, both in the order in which they were added. Looking up names and keys
// ignores the case of ASCII letters; the first match counts.
//
// Texts are zero-terminated; null is taken as an empty text. A returned text belongs to its attribute or
// node and is valid as long as that exists. A node owns its attributes and children. Trees may be nested as
// deep as memory allows: nothing here is recursive.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tvxconv::attrlist {

class AttributeBlocks;
class AttributeNode;
struct ListCell;

// A key and its value, made by addAttribute of its node.
class Attribute {
public:
    Attribute(const Attribute&) = delete;
    Attribute& operator=(const Attribute&) = delete;

    const char* key() const { return text(); }
    const char* value() const { return text() + valueAt_; }
    std::int32_t flag() const { return 0; }  // reserved
    AttributeNode* owner() const { return owner_; }

private:
    friend class AttributeNode;
    friend class AttributeBlocks;

    struct Deleter {
        void operator()(Attribute* attribute) const;
    };
    using Owner = std::unique_ptr<Attribute, Deleter>;

    // Both texts follow the object in memory.
    static std::size_t sizeFor(std::string_view key, std::string_view value);
    Attribute(AttributeNode* owner, std::size_t placeInBlock, std::string_view key, std::string_view value);
    ~Attribute() = default;
    const char* text() const { return reinterpret_cast<const char*>(this + 1); }

    AttributeNode* owner_;
    std::uint32_t placeInBlock_;  // see AttributeBlocks
    std::uint32_t valueAt_;       // the offset of the value in the text
};

// Makes a node for a parent's list of children; the caller adds it there.
using NodeFactory = AttributeNode* (*)(const char* name, AttributeNode* parent);

class AttributeNode {
public:
    // The node knows its parent but is not among its children yet: see addChild and adoptChild.
    AttributeNode(const char* name, AttributeNode* parent);

    AttributeNode(const AttributeNode&) = delete;
    AttributeNode& operator=(const AttributeNode&) = delete;

    // The root of a tree can override these two to choose the classes of the nodes below it. typeKeyFor
    // returns the kind of a child with this name ("unknown" here), factoryFor the function that makes a
    // child with a qualified key, "ROOT.PARENT.KIND" (null here: a plain node is made).
    virtual std::string typeKeyFor(const char* name);
    virtual NodeFactory factoryFor(const char* qualifiedKey);

    // Deletes the attributes and all nodes below, and removes the node from its parent's children.
    virtual ~AttributeNode();

    const char* name() const { return name_.c_str(); }
    AttributeNode* parent() const { return parent_; }

    // The attributes one by one, then null. A node has only one position for this, so a second walk over
    // the same node restarts the first. Attributes may be added and removed during a walk: none is skipped
    // or returned twice.
    Attribute* firstAttribute();
    Attribute* nextAttribute();

    // The attributes by number, from 0. Does not move the position of a walk.
    std::size_t attributeCount() const { return attributes_.size(); }
    Attribute* attributeAt(std::size_t index) const { return attributes_[index].get(); }

    // The first attribute with this key, or its value; null if there is none or `key` is null.
    Attribute* findAttribute(const char* key) const;
    const char* attributeValue(const char* key) const;

    // Adds an attribute at the end, even if there is one with that key already.
    Attribute* addAttribute(const char* key, const char* value);

    // Deletes the first attribute with this key, if any.
    void removeAttribute(const char* key);
    void removeAllAttributes();

    // The children, in the same way as the attributes.
    AttributeNode* firstChild();
    AttributeNode* nextChild();
    std::size_t childCount() const { return children_.size(); }
    AttributeNode* childAt(std::size_t index) const { return children_[index]; }
    AttributeNode* findChild(const char* name) const;

    // Adds a child at the end, made by createNode. Returns null, with nothing added, if the root's factory
    // returned null.
    AttributeNode* addChild(const char* name);

    // Adds `node` as the last child and takes ownership; if it was a child already, it moves to the end. It
    // must be on the heap, and not this node or one above it. Returns `node`; null is not added.
    AttributeNode* adoptChild(AttributeNode* node);

    // The topmost node: this one if it has no parent.
    AttributeNode* root();
    const AttributeNode* root() const;

    // The names from the root down to this node with "." between them; `out` is cleared first.
    void qualifiedName(std::string& out);

    // Makes a node that can be added to `parent` (not null), of the class that the root of the tree chooses:
    // factoryFor is asked with the qualified name of `parent`, ".", and the root's typeKeyFor(name).
    static AttributeNode* createNode(const char* name, AttributeNode* parent);

    // Reserves room for so many attributes and children in lists that are still empty. Growing the lists
    // instead costs 0.1 times the time of RapidJSON when reading a list of 64 MiB.
    void reserve(std::size_t attributes, std::size_t children);

private:
    friend void buildTree(const ListCell* list, AttributeNode* node, NodeFactory factory);

    static AttributeNode* createNode(const char* name, AttributeNode* parent, AttributeNode* root,
                                     std::string& parentKey);
    // addAttribute with memory from `blocks`.
    Attribute* addAttribute(const char* key, const char* value, AttributeBlocks& blocks);
    std::size_t indexOf(const char* key) const;
    void leaveParent();

    std::vector<Attribute::Owner> attributes_;
    std::vector<AttributeNode*> children_;
    std::size_t nextAttribute_ = 0;  // where the walks continue
    std::size_t nextChild_ = 0;
    std::string name_;
    bool isListed_ = false;  // whether it is among the children of its parent
    AttributeNode* parent_;
};

}  // namespace tvxconv::attrlist
