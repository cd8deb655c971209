#include "converter/rewriteProfile.h"

#include <climits>
#include <cstdio>
#include <cstdlib>

#include "converter/rewriteLines.h"
#include "fsutil/files.h"
#include "fsutil/letterCase.h"
#include "fsutil/paths.h"

namespace tvxconv {
namespace {

// References to the design and project are replaced by one to the netlist.
constexpr const char* kDesignReferences[] = {"DesignFile", "ProjectFile", "RootSchematics"};

// "+" lines up to this number name files that move with the profile.
constexpr int kLastMovedEntry = 7;

bool isDesignReference(std::string_view line) {
    for (const char* key : kDesignReferences) {
        if (fsutil::beginsWithKey(line, key)) return true;
    }
    return false;
}

const ProfileKey* keyOf(std::string_view line, std::span<const ProfileKey> keys) {
    for (const ProfileKey& entry : keys) {
        if (fsutil::beginsWithKey(line, entry.key)) return &entry;
    }
    return nullptr;
}

std::string keyLine(const char* key, const std::string& value) {
    return std::string(key) + "= \"" + value + "\" ";
}

// The whole number after the "+" of a line, blanks and a sign before it allowed. False if there is none, or
// it does not fit an int.
bool entryNumber(std::string_view line, int& number) {
    const std::string text(line.substr(1));
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (end == text.c_str() || value > INT_MAX || value < INT_MIN) return false;
    number = static_cast<int>(value);
    return true;
}

// Whether the file of this line moves with the profile, and which file that is.
bool isMovedEntry(std::string_view line, const ProfileRules& rules, ListEntry& entry) {
    if (line.front() != '+' || !entryNumber(line, entry.number) || entry.number > kLastMovedEntry) {
        return false;
    }
    std::string value;
    if (fsutil::scanQuotedValue(line, value) != 1) return false;
    const fsutil::Reference reference(value);
    if (!reference.isRelative() || !reference.resolve(rules.folder, entry.file)) return false;
    if (!fsutil::isPresentFile(entry.file)) return false;
    entry.name = fsutil::fileNameOf(entry.file);
    return !entry.name.empty();
}

}  // namespace

std::string listEntryLine(const ListEntry& entry) {
    return std::string("+").append(std::to_string(entry.number)) + " \"" + entry.name + "\" ";
}

int rewriteProfileIfPresent(const std::string& oldPath, const std::string& newPath, const ProfileRules& rules,
                            bool& isPresent) {
    bool isConnected = false;
    const auto rewrite = [&](std::string_view line, fsutil::LineWriter& writer) {
        if (isDesignReference(line)) {
            if (!isConnected) writer.writeInPlaceOf(line, keyLine("Connectivity", rules.netlist));
            isConnected = true;
            return;
        }
        if (const ProfileKey* key = keyOf(line, rules.keys); key != nullptr) {
            std::string value;
            const int scanned = fsutil::scanQuotedValue(line, value);
            if (scanned == EOF) return;
            if (scanned == 1) {
                if (!containsEither(value, key->mark, key->otherMark)) return;
                value = rules.newValue(key->value, value);
            }
            writer.writeInPlaceOf(line, keyLine(key->key, value));
            return;
        }
        ListEntry entry;
        if (isMovedEntry(line, rules, entry)) {
            rules.moveEntry(entry, line, writer);
        } else {
            writer.write(line);
        }
    };
    return rewriteLinesIfPresent(oldPath, newPath, rewrite, isPresent);
}

}  // namespace tvxconv
