// AttributeNode.h
//
// The tree that an attribute-list file becomes: named nodes, each with a list of attributes (a key and a
// value, both text) and a list of children, both in the order in which they were added. Names and keys are
// looked up without regard to the case of ASCII letters; the first of several wins.
//
// Texts go in and come out zero-terminated, and null goes in as an empty text. What comes out belongs to the
// attribute or node and lives as long as it. A node owns its attributes and children. Trees may be nested as
// deep as memory allows: nothing here calls itself for a child or parent.

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

// A key and its value. Made by the node that holds it, by addAttribute.
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

    // Both texts lie right behind the object, in the same piece of memory: one of its own, or, so many bytes
    // behind its beginning (0 for the former), a block that it shares with others.
    static std::size_t sizeFor(std::string_view key, std::string_view value);
    static Attribute* createAt(void* memory, std::size_t placeInBlock, std::string_view key,
                               std::string_view value, AttributeNode* owner);

    Attribute(AttributeNode* owner, std::size_t placeInBlock, std::size_t valueAt)
        : owner_(owner),
          placeInBlock_(static_cast<std::uint32_t>(placeInBlock)),
          valueAt_(static_cast<std::uint32_t>(valueAt)) {}
    ~Attribute() = default;
    const char* text() const { return reinterpret_cast<const char*>(this + 1); }

    AttributeNode* owner_;
    std::uint32_t placeInBlock_;
    std::uint32_t valueAt_;
};

// Makes a node for a parent's list of children; the caller puts it there.
using NodeFactory = AttributeNode* (*)(const char* name, AttributeNode* parent);

class AttributeNode {
public:
    // A node that knows its parent but is not among its children: addChild and adoptChild see to that.
    AttributeNode(const char* name, AttributeNode* parent);

    AttributeNode(const AttributeNode&) = delete;
    AttributeNode& operator=(const AttributeNode&) = delete;

    // With these two the root of a tree chooses the classes of the nodes below it. typeKeyFor names the kind
    // of node that a child of this name is ("unknown" here); factoryFor tells what makes the node of a
    // qualified key, "ROOT.PARENT.KIND" (null here: a plain node).
    virtual std::string typeKeyFor(const char* name);
    virtual NodeFactory factoryFor(const char* qualifiedKey);

    // Takes the attributes and everything below with it, and leaves the parent's list of children.
    virtual ~AttributeNode();

    const char* name() const { return name_.c_str(); }
    AttributeNode* parent() const { return parent_; }

    // The attributes one by one; null when there are none (left). A node has one position for this, so a
    // second walk over the same node restarts the first. Attributes may be added and removed meanwhile: none
    // is skipped or told twice.
    Attribute* firstAttribute();
    Attribute* nextAttribute();

    // The attributes by number, from 0, without touching that position.
    std::size_t attributeCount() const { return attributes_.size(); }
    Attribute* attributeAt(std::size_t index) const { return attributes_[index].get(); }

    // The first attribute of this key, or its value; null when there is none or `key` is null.
    Attribute* findAttribute(const char* key) const;
    const char* attributeValue(const char* key) const;

    // Adds an attribute behind the others, also where there is one of that key already.
    Attribute* addAttribute(const char* key, const char* value);

    // Deletes the first attribute of this key, if there is one.
    void removeAttribute(const char* key);
    void removeAllAttributes();

    // The children, as for attributes.
    AttributeNode* firstChild();
    AttributeNode* nextChild();
    std::size_t childCount() const { return children_.size(); }
    AttributeNode* childAt(std::size_t index) const { return children_[index]; }
    AttributeNode* findChild(const char* name) const;

    // Adds a child behind the others, made by createNode. Null, with nothing added, only where a class of
    // its own failed to make one.
    AttributeNode* addChild(const char* name);

    // Puts `node`, which is on the heap and not above this one, behind the other children and owns it from
    // now on. It leaves the list of children that it may have been in. Returns `node`.
    AttributeNode* adoptChild(AttributeNode* node);

    // The topmost node: this one, where it has no parent.
    AttributeNode* root();
    const AttributeNode* root() const;

    // The names from the root down to this node with "." between them; `out` is cleared first.
    void qualifiedName(std::string& out);

    // A node for the children of `parent` (which must not be null), of the class that the root of the tree
    // chooses: asked with the qualified name of the parent, ".", and the root's typeKeyFor(name).
    static AttributeNode* createNode(const char* name, AttributeNode* parent);

    // Makes room for just so many attributes and children, in lists that are still empty.
    void reserve(std::size_t attributes, std::size_t children);

private:
    friend void buildTree(const ListCell* list, AttributeNode* node, NodeFactory factory);

    static AttributeNode* createNode(const char* name, AttributeNode* parent, AttributeNode* root,
                                     std::string& parentKey);
    // addAttribute for many: the memory is taken from `blocks`.
    Attribute* addAttribute(const char* key, const char* value, AttributeBlocks& blocks);
    std::size_t indexOf(const char* key) const;
    void leaveParent();

    std::vector<Attribute::Owner> attributes_;
    std::vector<AttributeNode*> children_;
    std::size_t nextAttribute_ = 0;  // the walks: what comes next
    std::size_t nextChild_ = 0;
    std::string name_;
    bool isListed_ = false;  // whether it is among the children of its parent
    AttributeNode* parent_;
};

}  // namespace tvxconv::attrlist
