#include "converter/rewriteDeck.h"

#include "converter/rewriteLines.h"
#include "fsutil/lines.h"

namespace tvxconv {
namespace {

constexpr const char* kInclude = ".INC";
constexpr const char* kStimulusLibrary = ".STMLIB";
constexpr const char* kLibrary = ".LIB";

// What a deck's directive may name, recognised by the extension in one of two spellings. They are tested in
// the order of the table.
enum class Target { netlist, file };
struct DeckReference {
    const char* directive;
    const char* mark;
    const char* otherMark;
    Target target;
};
constexpr DeckReference kDeckReferences[] = {
    {kInclude, ".net", ".NET", Target::netlist},
    {kInclude, ".inc", ".INC", Target::file},
    {kStimulusLibrary, ".stl", ".STL", Target::file},
    {kLibrary, ".lib", ".LIB", Target::file},
};

const char* directiveOf(std::string_view line) {
    for (const char* directive : {kInclude, kStimulusLibrary, kLibrary}) {
        if (fsutil::beginsWithKey(line, directive)) return directive;
    }
    return nullptr;
}

const DeckReference* deckReferenceOf(const char* directive, const std::string& value) {
    for (const DeckReference& reference : kDeckReferences) {
        if (reference.directive != directive) continue;
        if (containsEither(value, reference.mark, reference.otherMark)) return &reference;
    }
    return nullptr;
}

std::string directiveLine(const char* directive, const std::string& file) {
    return std::string(directive) + " \"" + file + "\"";
}

}  // namespace

int rewriteDeck(const std::string& oldPath, const std::string& newPath, const std::string& netlist,
                const ReferenceResolver& resolve) {
    return rewriteLines(oldPath, newPath, [&](std::string_view line, fsutil::LineWriter& writer) {
        const char* directive = directiveOf(line);
        if (directive == nullptr) {
            writer.write(line);
            return;
        }
        std::string value;
        if (fsutil::scanQuotedValue(line, value) != 1) return;
        const DeckReference* found = deckReferenceOf(directive, value);
        if (found == nullptr) return;
        std::string reference;
        if (found->target == Target::netlist) {
            reference = netlist;
        } else if (resolve(value, reference) != 0) {
            reference.clear();
        }
        if (reference.empty()) {
            writer.write(line);
        } else {
            writer.writeInPlaceOf(line, directiveLine(directive, reference));
        }
    });
}

int rewriteNetlist(const std::string& oldPath, const std::string& newPath, const std::string& owner,
                   EmptyInclude emptyInclude) {
    return rewriteLines(oldPath, newPath, [&](std::string_view line, fsutil::LineWriter& writer) {
        const bool isInclude = fsutil::beginsWithKey(line, kInclude);
        std::string value;
        const bool hasValue = isInclude && fsutil::scanQuotedValue(line, value) == 1;
        if (!isInclude || (!hasValue && emptyInclude == EmptyInclude::isKept)) {
            writer.write(line);
        } else if (hasValue && containsEither(value, ".par", ".PAR")) {
            writer.writeInPlaceOf(line, directiveLine(kInclude, "../" + owner + ".par"));
        }
    });
}

}  // namespace tvxconv
