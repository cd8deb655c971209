// attributeNode_test.cpp
//
// The tree of nodes and attributes: look-ups, order, walks, owners, classes of nodes that a root chooses, and
// trees as deep as a million nodes.

#include "attrlist/AttributeNode.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/attributeTrees.h"

namespace {

using namespace tvxconv::attrlist;
using std::string;
using tests::treeText;

string qualifiedNameOf(AttributeNode& node) {
    string name = "rubbish";
    node.qualifiedName(name);
    return name;
}

TEST(AttributeNode, BeginsEmpty) {
    AttributeNode root("Root", nullptr);
    AttributeNode node("Node", &root);
    EXPECT_STREQ(node.name(), "Node");
    EXPECT_EQ(node.parent(), &root);
    EXPECT_EQ(root.parent(), nullptr);
    EXPECT_EQ(treeText(root), "Root{}") << "a node is not a child before it was added";
    EXPECT_EQ(node.firstAttribute(), nullptr);
    EXPECT_EQ(node.nextAttribute(), nullptr);
    EXPECT_EQ(node.firstChild(), nullptr);
    EXPECT_EQ(node.nextChild(), nullptr);
}

TEST(AttributeNode, TakesNullForAnEmptyText) {
    AttributeNode node(nullptr, nullptr);
    EXPECT_STREQ(node.name(), "");
    EXPECT_STREQ(node.addChild(nullptr)->name(), "");
    const Attribute* const withoutKey = node.addAttribute(nullptr, "value");
    const Attribute* const withoutValue = node.addAttribute("key", nullptr);
    EXPECT_STREQ(withoutKey->key(), "");
    EXPECT_STREQ(withoutKey->value(), "value");
    EXPECT_STREQ(withoutValue->key(), "key");
    EXPECT_STREQ(withoutValue->value(), "");
    EXPECT_EQ(node.findAttribute(""), withoutKey);
}

TEST(AttributeNode, KeepsCopiesOfTexts) {
    string name = "Name";
    string key = "Key";
    string value = "Value";
    AttributeNode node(name.c_str(), nullptr);
    const Attribute* const attribute = node.addAttribute(key.c_str(), value.c_str());
    name[0] = key[0] = value[0] = 'x';
    EXPECT_STREQ(node.name(), "Name");
    EXPECT_STREQ(attribute->key(), "Key");
    EXPECT_STREQ(attribute->value(), "Value");
    EXPECT_EQ(attribute->owner(), &node);
    EXPECT_EQ(attribute->flag(), 0);
}

TEST(AttributeNode, FindsAttributesAndChildrenIgnoringCase) {
    AttributeNode node("node", nullptr);
    const Attribute* const attribute = node.addAttribute("NAME", "value");
    node.addAttribute("names", "other");
    const AttributeNode* const child = node.addChild("Profiles");
    for (const char* key : {"Name", "NAME", "name", "nAmE"}) {
        EXPECT_EQ(node.findAttribute(key), attribute) << key;
        EXPECT_STREQ(node.attributeValue(key), "value") << key;
    }
    for (const char* key : {"nam", "nam_", "", "Profiles", "n\xc1me"}) {
        EXPECT_EQ(node.findAttribute(key), nullptr) << key;
        EXPECT_EQ(node.attributeValue(key), nullptr) << key;
    }
    EXPECT_EQ(node.findAttribute(nullptr), nullptr);
    EXPECT_EQ(node.attributeValue(nullptr), nullptr);
    EXPECT_EQ(node.findChild("PROFILES"), child);
    for (const char* name : {"Profile", "Profiles_", "", "name"}) {
        EXPECT_EQ(node.findChild(name), nullptr) << name;
    }
    EXPECT_EQ(node.findChild(nullptr), nullptr);
}

TEST(AttributeNode, TheFirstOfSeveralWins) {
    AttributeNode node("node", nullptr);
    node.addAttribute("k", "one");
    node.addAttribute("other", "x");
    node.addAttribute("K", "two");
    EXPECT_STREQ(node.attributeValue("K"), "one");
    node.removeAttribute("K");
    EXPECT_EQ(treeText(node), "node{other=x K=two}");
    EXPECT_STREQ(node.attributeValue("k"), "two");
    node.removeAttribute("k");
    node.removeAttribute("k");
    node.removeAttribute(nullptr);
    EXPECT_EQ(treeText(node), "node{other=x}");
    AttributeNode* const first = node.addChild("c");
    node.addChild("C");
    EXPECT_EQ(node.findChild("C"), first);
}

TEST(AttributeNode, RemovesAllAttributesAndTakesNewOnes) {
    AttributeNode node("node", nullptr);
    for (int i = 0; i < 100; ++i) node.addAttribute("key", "value");
    node.addChild("child");
    node.removeAllAttributes();
    EXPECT_EQ(treeText(node), "node{child{}}");
    node.addAttribute("new", "value");
    EXPECT_EQ(treeText(node), "node{new=value child{}}");
}

TEST(AttributeNode, WalksInTheOrderOfAdding) {
    AttributeNode node("node", nullptr);
    std::vector<Attribute*> attributes;
    std::vector<AttributeNode*> children;
    for (const char* text : {"c", "a", "b", "a"}) {
        attributes.push_back(node.addAttribute(text, ""));
        children.push_back(node.addChild(text));
    }
    for (int round = 0; round < 2; ++round) {
        std::vector<Attribute*> walkedAttributes;
        std::vector<AttributeNode*> walkedChildren;
        // Both walks at once: each has a position of its own.
        Attribute* attribute = node.firstAttribute();
        AttributeNode* child = node.firstChild();
        while (attribute != nullptr && child != nullptr) {
            walkedAttributes.push_back(attribute);
            walkedChildren.push_back(child);
            attribute = node.nextAttribute();
            child = node.nextChild();
        }
        EXPECT_EQ(walkedAttributes, attributes);
        EXPECT_EQ(walkedChildren, children);
        EXPECT_EQ(node.nextAttribute(), nullptr) << "once more at the end";
        EXPECT_EQ(node.nextChild(), nullptr) << "once more at the end";
    }
}

TEST(AttributeNode, AWalkWithinAWalkRestartsIt) {
    AttributeNode node("node", nullptr);
    for (const char* key : {"a", "b", "c"}) node.addAttribute(key, "");
    node.firstAttribute();
    node.nextAttribute();
    EXPECT_STREQ(node.firstAttribute()->key(), "a");
    EXPECT_STREQ(node.nextAttribute()->key(), "b");
    // Look-ups are no walks.
    node.findAttribute("a");
    EXPECT_STREQ(node.nextAttribute()->key(), "c");
}

TEST(AttributeNode, AWalkBearsAddingAndRemoving) {
    AttributeNode node("node", nullptr);
    for (const char* key : {"a", "b", "c", "d"}) node.addAttribute(key, "");
    EXPECT_STREQ(node.firstAttribute()->key(), "a");
    EXPECT_STREQ(node.nextAttribute()->key(), "b");
    node.removeAttribute("b");  // the one at hand
    EXPECT_STREQ(node.nextAttribute()->key(), "c");
    node.removeAttribute("a");  // one before
    EXPECT_STREQ(node.nextAttribute()->key(), "d");
    EXPECT_EQ(node.nextAttribute(), nullptr);
    node.addAttribute("e", "");
    EXPECT_STREQ(node.nextAttribute()->key(), "e");
    node.removeAllAttributes();
    EXPECT_EQ(node.nextAttribute(), nullptr);

    AttributeNode* const first = node.addChild("first");
    AttributeNode* const second = node.addChild("second");
    EXPECT_EQ(node.firstChild(), first);
    delete first;
    EXPECT_EQ(node.nextChild(), second);
    EXPECT_EQ(node.nextChild(), nullptr);
}

TEST(AttributeNode, AddsPlainChildrenWhereTheRootChoosesNoClass) {
    AttributeNode root("Root", nullptr);
    AttributeNode* const child = root.addChild("Group");
    AttributeNode* const grandchild = child->addChild("Item");
    EXPECT_EQ(typeid(*grandchild), typeid(AttributeNode));
    EXPECT_EQ(child->parent(), &root);
    EXPECT_EQ(grandchild->parent(), child);
    EXPECT_EQ(treeText(root), "Root{Group{Item{}}}");
    EXPECT_EQ(root.typeKeyFor("Group"), "unknown");
    EXPECT_EQ(root.typeKeyFor(nullptr), "unknown");
    EXPECT_EQ(root.factoryFor("Root.unknown"), nullptr);
}

TEST(AttributeNode, KnowsItsRootAndQualifiedName) {
    AttributeNode root("Root", nullptr);
    AttributeNode* const child = root.addChild("");
    AttributeNode* const grandchild = child->addChild("Item");
    EXPECT_EQ(root.root(), &root);
    EXPECT_EQ(grandchild->root(), &root);
    const AttributeNode& constant = *grandchild;
    EXPECT_EQ(constant.root(), &root);
    EXPECT_EQ(qualifiedNameOf(root), "Root");
    EXPECT_EQ(qualifiedNameOf(*child), "Root.");
    EXPECT_EQ(qualifiedNameOf(*grandchild), "Root..Item");
    AttributeNode nameless("", nullptr);
    EXPECT_EQ(qualifiedNameOf(nameless), "");
    EXPECT_EQ(qualifiedNameOf(*nameless.addChild("a")), ".a");
}

// A node that counts how many of its kind there are.
class Counted : public AttributeNode {
public:
    Counted(const char* name, AttributeNode* parent) : AttributeNode(name, parent) { ++count; }
    ~Counted() override { --count; }
    static inline int count = 0;
};

// A root that makes its "Group"s, wherever they are in the tree, nodes of a class.
class ChoosingRoot : public AttributeNode {
public:
    using AttributeNode::AttributeNode;
    string typeKeyFor(const char* name) override { return string(name) == "Group" ? "group" : "other"; }
    NodeFactory factoryFor(const char* qualifiedKey) override {
        asked.emplace_back(qualifiedKey);
        if (!asked.back().ends_with(".group")) return nullptr;
        return [](const char* name, AttributeNode* parent) -> AttributeNode* {
            return new Counted(name, parent);
        };
    }
    std::vector<string> asked;
};

TEST(AttributeNode, TheRootChoosesTheClassesOfAllNodesBelow) {
    Counted::count = 0;
    {
        ChoosingRoot root("Root", nullptr);
        AttributeNode* const group = root.addChild("Group");
        AttributeNode* const item = group->addChild("Item");
        AttributeNode* const inner = item->addChild("Group");
        EXPECT_EQ(root.asked,
                  (std::vector<string>{"Root.group", "Root.Group.other", "Root.Group.Item.group"}));
        EXPECT_EQ(typeid(*group), typeid(Counted));
        EXPECT_EQ(typeid(*item), typeid(AttributeNode));
        EXPECT_EQ(typeid(*inner), typeid(Counted));
        EXPECT_EQ(inner->parent(), item);
        EXPECT_EQ(treeText(root), "Root{Group{Item{Group{}}}}");
        EXPECT_EQ(Counted::count, 2);
    }
    EXPECT_EQ(Counted::count, 0);
}

TEST(AttributeNode, CreatedNodesAreNotAmongTheChildren) {
    ChoosingRoot root("Root", nullptr);
    const std::unique_ptr<AttributeNode> node(AttributeNode::createNode("Group", &root));
    EXPECT_EQ(node->parent(), &root);
    EXPECT_STREQ(node->name(), "Group");
    const AttributeNode& made = *node;
    EXPECT_EQ(typeid(made), typeid(Counted));
    EXPECT_EQ(treeText(root), "Root{}");
}

// A root whose factory fails.
class BarrenRoot : public AttributeNode {
public:
    using AttributeNode::AttributeNode;
    NodeFactory factoryFor(const char*) override {
        return [](const char*, AttributeNode*) -> AttributeNode* { return nullptr; };
    }
};

TEST(AttributeNode, AChildThatWasNotMadeIsNotAdded) {
    BarrenRoot root("Root", nullptr);
    EXPECT_EQ(root.addChild("child"), nullptr);
    EXPECT_EQ(root.adoptChild(nullptr), nullptr);
    EXPECT_EQ(treeText(root), "Root{}");
}

TEST(AttributeNode, AdoptsNodesFromAnywhere) {
    AttributeNode root("Root", nullptr);
    AttributeNode* const a = root.addChild("a");
    AttributeNode* const b = root.addChild("b");
    auto* const stranger = new AttributeNode("stranger", nullptr);
    stranger->addAttribute("key", "value");
    EXPECT_EQ(root.adoptChild(stranger), stranger);
    EXPECT_EQ(stranger->parent(), &root);
    EXPECT_EQ(treeText(root), "Root{a{} b{} stranger{key=value}}");
    b->adoptChild(a);
    EXPECT_EQ(treeText(root), "Root{b{a{}} stranger{key=value}}") << "a child has one parent";
    root.adoptChild(b);
    EXPECT_EQ(treeText(root), "Root{stranger{key=value} b{a{}}}") << "once more, at the end";
}

TEST(AttributeNode, DeletesWhatIsBelow) {
    Counted::count = 0;
    {
        Counted root("root", nullptr);
        AttributeNode* const child = root.adoptChild(new Counted("child", &root));
        child->adoptChild(new Counted("grandchild", child));
        child->adoptChild(new Counted("grandchild", child));
        root.adoptChild(new Counted("other", nullptr));
        EXPECT_EQ(Counted::count, 5);
        delete child;
        EXPECT_EQ(Counted::count, 2);
        EXPECT_EQ(treeText(root), "root{other{}}") << "a deleted child leaves the list";
    }
    EXPECT_EQ(Counted::count, 0);
}

TEST(AttributeNode, BearsATreeAMillionDeep) {
    constexpr int kDepth = 1000000;
    Counted::count = 0;
    {
        Counted root("root", nullptr);
        AttributeNode* deepest = &root;
        for (int i = 0; i < kDepth; ++i) {
            deepest = deepest->adoptChild(new Counted("n", nullptr));
            deepest->addAttribute("a", "1");
        }
        EXPECT_EQ(deepest->root(), &root);
        const string name = qualifiedNameOf(*deepest);
        EXPECT_EQ(name.size(), 4 + 2u * kDepth);
        EXPECT_EQ(name.substr(0, 8), "root.n.n");
        EXPECT_EQ(name.substr(name.size() - 4), ".n.n");
    }
    EXPECT_EQ(Counted::count, 0);
}

TEST(AttributeNode, BearsAMillionAttributesAndChildren) {
    constexpr std::size_t kCount = 1000000;
    AttributeNode root("root", nullptr);
    for (std::size_t i = 0; i < kCount; ++i) {
        root.addAttribute("key", "value");
        root.adoptChild(new AttributeNode("child", &root));
    }
    EXPECT_EQ(root.attributeCount(), kCount);
    EXPECT_EQ(root.childCount(), kCount);
}

TEST(AttributeNode, KeepsLongTexts) {
    const string key(100000, 'k');
    const string value(3000000, 'v');
    AttributeNode node("node", nullptr);
    const Attribute* const attribute = node.addAttribute(key.c_str(), value.c_str());
    EXPECT_EQ(attribute->key(), key);
    EXPECT_EQ(attribute->value(), value);
}

}  // namespace
