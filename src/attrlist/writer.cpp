#include "attrlist/writer.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace tvxconv::attrlist {
namespace {

constexpr std::size_t kBufferSize = 64 * 1024;
constexpr std::size_t kIndentation = 4;

class Printer {
public:
    explicit Printer(const std::function<void(std::string_view)>& sink)
        : sink_(sink), buffer_(std::make_unique_for_overwrite<char[]>(kBufferSize)) {}

    void open(const AttributeNode& node, std::size_t level, const char* typeName) {
        indent(level);
        put("(\"");
        putEscaped(node.name(), false);
        if (typeName != nullptr) {
            put("\"\t\"");
            putEscaped(typeName, false);
        }
        put("\"\n");
        for (std::size_t i = 0; i < node.attributeCount(); ++i) {
            const Attribute& attribute = *node.attributeAt(i);
            indent(level + kIndentation);
            put("(\"");
            putEscaped(attribute.key(), false);
            put("\"\t\"");
            putEscaped(attribute.value(), true);
            put("\")\n");
        }
    }

    void close(std::size_t level) {
        indent(level);
        put(")\n");
    }

    void flush() {
        if (size_ > 0) sink_({buffer_.get(), size_});
        size_ = 0;
    }

private:
    // Room for so many bytes.
    char* room(std::size_t bytes) {
        if (kBufferSize - size_ < bytes) flush();
        return buffer_.get() + size_;
    }

    void put(std::string_view text) {
        std::memcpy(room(text.size()), text.data(), text.size());
        size_ += text.size();
    }

    void indent(std::size_t blanks) {
        while (blanks > 0) {
            const std::size_t piece = std::min(blanks, kBufferSize);
            std::memset(room(piece), ' ', piece);
            size_ += piece;
            blanks -= piece;
        }
    }

    void putEscaped(const char* text, bool isValue) {
        // In pieces of which the buffer can hold twice as much.
        constexpr std::size_t kPiece = kBufferSize / 2;
        for (std::size_t left = std::strlen(text); left > 0;) {
            const std::size_t piece = std::min(left, kPiece);
            char* out = room(2 * piece);
            for (std::size_t i = 0; i < piece; ++i) {
                const char c = text[i];
                if (c == '\\') *out++ = c;
                if (c != '"' || !isValue) *out++ = c;
            }
            size_ = static_cast<std::size_t>(out - buffer_.get());
            text += piece;
            left -= piece;
        }
    }

    const std::function<void(std::string_view)>& sink_;
    std::unique_ptr<char[]> buffer_;
    std::size_t size_ = 0;
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
    printer.flush();
}

}  // namespace tvxconv::attrlist
