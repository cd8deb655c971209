#include "attrlist/writer.h"

#include <cstddef>
#include <vector>

namespace tvxconv::attrlist {
namespace {

constexpr std::size_t kIndentation = 4;

class Printer {
public:
    explicit Printer(const std::function<void(std::string_view)>& sink) : sink_(sink) {}

    void open(const AttributeNode& node, std::size_t level, const char* typeName) {
        indent(level);
        sink_("(\"");
        printEscaped(node.name());
        if (typeName != nullptr) {
            sink_("\"\t\"");
            printEscaped(typeName);
        }
        sink_("\"\n");
        for (std::size_t i = 0; i < node.attributeCount(); ++i) {
            const Attribute& attribute = *node.attributeAt(i);
            indent(level + kIndentation);
            sink_("(\"");
            printEscaped(attribute.key());
            sink_("\"\t\"");
            printValue(attribute.value());
            sink_("\")\n");
        }
    }

    void close(std::size_t level) {
        indent(level);
        sink_(")\n");
    }

private:
    void indent(std::size_t blanks) {
        constexpr std::string_view kBlanks = "                                ";
        for (; blanks > kBlanks.size(); blanks -= kBlanks.size()) sink_(kBlanks);
        sink_(kBlanks.substr(0, blanks));
    }

    void printEscaped(std::string_view text) {
        for (std::size_t at = text.find('\\'); at != std::string_view::npos; at = text.find('\\')) {
            sink_(text.substr(0, at + 1));
            sink_("\\");
            text.remove_prefix(at + 1);
        }
        sink_(text);
    }

    void printValue(std::string_view text) {
        for (std::size_t at = text.find('"'); at != std::string_view::npos; at = text.find('"')) {
            printEscaped(text.substr(0, at));
            text.remove_prefix(at + 1);
        }
        printEscaped(text);
    }

    const std::function<void(std::string_view)>& sink_;
};

}  // namespace

void printTree(const AttributeNode& document, const char* typeName,
               const std::function<void(std::string_view)>& sink) {
    struct Level {
        const AttributeNode* node;
        std::size_t nextChild;
    };
    Printer printer(sink);
    std::vector<Level> levels;
    levels.push_back({&document, 0});
    printer.open(document, 0, typeName);
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.nextChild < level.node->childCount()) {
            const AttributeNode* child = level.node->childAt(level.nextChild++);
            printer.open(*child, kIndentation * levels.size(), nullptr);
            levels.push_back({child, 0});
        } else {
            printer.close(kIndentation * (levels.size() - 1));
            levels.pop_back();
        }
    }
}

}  // namespace tvxconv::attrlist
